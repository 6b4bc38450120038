#pragma once

namespace renewer {

// What the program was started with.
struct update_arguments {
    int kind;             // see package_kind
    const char *path;     // the package, or the directory that holds its unpacked files
    const char *expected; // the part-number characters that the package is meant for; may be null
                          // for kinds other than 0 to 2
};

// One update, from its arguments to the end of the process: with status 0 when the package or the
// unit was refused or the user declined, with status 1 after an install attempt and the reboot
// command.
[[noreturn]] void update_run(const update_arguments &arguments);

// The refusal ending: tells the rest of the unit with "/tmp/update_over" that the updater is done,
// waits until that has been taken away, and ends the process with status 0.
[[noreturn]] void sig_file();

} // namespace renewer
