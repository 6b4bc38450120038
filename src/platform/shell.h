#pragma once

#include "platform/owner.h"

namespace renewer {

// Exit codes of a shell for a command that it could not run (POSIX, shell command language 2.8.2).
constexpr int exit_not_executable = 126;
constexpr int exit_not_found = 127;

// Runs one command line through the system shell and waits for it, as system() does. What the
// program has printed so far is flushed first, so that its lines stay before those of the command
// whatever standard output is. If there is no process or memory for the shell, it tries again a few
// times, a second apart.
//
// Returns the shell's wait status: 0 when the command succeeded, non-zero otherwise (-1 when no
// shell could be started).
int shell(const char *command);

// The same without the flush: for a signal handler, and for a forked child, whose buffers are its
// parent's.
int system_with_patience(const char *command);

// Returns `text` in the form in which the shell takes it as one word: unchanged if it contains
// nothing special to the shell, else in single quotes. Empty when there is no memory for it.
owned_memory<char> shell_word(const char *text);

// Runs `command`, a blank and `argument` as one word (see `shell_word`). An argument that begins
// with '-' is preceded by "-- ", which ends the options (POSIX, utility syntax guideline 10). The
// line is never cut: without memory for the whole line nothing is run.
//
// Returns the shell's wait status as `shell` does, -1 when nothing was run.
int shell_with_argument(const char *command, const char *argument);

} // namespace renewer
