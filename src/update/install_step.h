#pragma once

namespace renewer {

// Puts the unpacked update in "/firmware/update" into place: copies it into "/firmware", runs
// "/firmware/install.sh" (its output goes to "/data/app/log/update.log") within `timeout` seconds,
// twice at the most, and copies the update's updater over the installed one unless the version
// files say that it is older. Nothing is rolled back.
//
// path:    the package that the update came from; not used.
// timeout: seconds for each run of the script, -1 for no limit.
//
// Prints "wait <timeout> sec...", what `fork_exec_timeout` prints, and the two versions when
// "/tmp/pack_version" exists.
//
// Returns 1 when the files were copied, the script succeeded and the version files, if any, could
// be read; 0 otherwise. A version file that cannot be opened is reported with the prefix "fopen".
int do_update(const char *path, int timeout);

} // namespace renewer
