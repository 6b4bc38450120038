#pragma once

#include <linux/seccomp.h>
#include <sys/types.h>
#include <vector>

namespace simulator {

// Starts a program whose system calls of these numbers, and those of all that it starts, wait for
// the reader of the returned descriptor (seccomp_unotify(2)). Stores the program's number in
// `program`. Ends the process with a message when the system refuses.
int start_observed(char **command, const std::vector<int> &numbers, pid_t *program);

// Takes the next waiting call. False when it is gone again.
bool take_call(int listener, seccomp_notif *call);

// Lets a call go on, or fail with an error.
void let_go(int listener, const seccomp_notif &call);
void let_fail(int listener, const seccomp_notif &call, int error);

} // namespace simulator
