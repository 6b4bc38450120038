#pragma once

namespace renewer {

// How long each run of the install script may take, in seconds, and how often it is started at the
// most; `end_grace_seconds` of timed_command.h is the time that it then has to end.
constexpr int host_time_limit = 60;
constexpr int no_time_limit = -1;
constexpr int install_tries = 2;

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
