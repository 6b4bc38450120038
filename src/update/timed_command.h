#pragma once

namespace renewer {

// How long an attempt that was told to end, or the rest of a failed one, has until it is killed: it
// may be in the middle of a block of flash.
constexpr unsigned end_grace_seconds = 30;

// Runs `command` through the system shell in a child process under a time limit, up to `tries`
// times (at least once), until an attempt succeeds.
//
// command: shell command line.
// name:    name of the process that the time-out ends (see `handleTimeout`); 63 characters count.
// timeout: seconds for each attempt; (unsigned)-1 is no limit in practice.
//
// The command's standard input is empty, and SIGHUP and SIGPIPE end it as usual. An attempt
// succeeds when the command ends with exit code 0, also after the time limit. When an attempt
// fails, what it left running has `end_grace_seconds` and is then ended by its process group, so
// that none of it runs beside the next attempt; what a successful attempt leaves running is left
// alone.
//
// Prints "fork_exec: <command>" for each attempt and "status <exit code>" for each that was not
// ended by a signal; the code of a shell that a signal ended is 128 plus the signal's number.
//
// Returns 0 for success; the wait status (wait(2)) of the last attempt when its exit code was not
// 0; 1 when the child itself was ended by a signal, or when no child could be made, which is
// reported with the prefix "fork failed".
int fork_exec_timeout(const char *command, const char *name, unsigned timeout, int tries);

// Handler of SIGALRM: runs "killall <name>". While an attempt is waited for it also sets the alarm
// again, for `end_grace_seconds`, and at the next one ends what still runs of the attempt.
void handleTimeout(int signal);

} // namespace renewer
