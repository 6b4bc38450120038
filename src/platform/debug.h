#pragma once

namespace renewer {

// Prints `format` with its arguments on standard output when `level` is 1 or less (0: errors and
// refusals, 1: progress and failure notes); higher levels (2 and 5: traces, 6: middleware
// complaints) are never printed. Adds no prefix and no line end. Safe from any thread: each call
// is one vprintf.
//
// Returns 1 when it printed, 0 when the level is too high.
[[gnu::format(printf, 2, 3)]] int debug(int level, const char *format, ...);

// Sets `debug_flag` to 1 when `mode` is 1, to 0 otherwise. What `debug` prints does not depend
// on it.
void set_debug_mode(int mode);

extern int debug_flag;

} // namespace renewer
