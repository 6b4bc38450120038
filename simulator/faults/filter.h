#pragma once

#include <linux/seccomp.h>
#include <sys/types.h>
#include <vector>

namespace simulator {

// Starts a program. Its system calls with these numbers, and those of all its descendants, wait for
// the reader of the returned descriptor (seccomp_unotify(2)). Stores the program's process number
// in `program`. Ends the process with a message if the system refuses.
int start_observed(char **command, const std::vector<int> &numbers, pid_t *program);

// Takes the next waiting call. Returns false if its process has been killed meanwhile.
bool next_call(int listener, seccomp_notif *call);

// Let a waiting call go on, or fail with an error number.
void allow_call(int listener, const seccomp_notif &call);
void fail_call(int listener, const seccomp_notif &call, int error);

} // namespace simulator
