#include "platform/debug.h"

#include <cstdarg>
#include <cstdio>

namespace renewer {

namespace {

constexpr int highest_printed_level = 1;

} // namespace

int debug_flag = 0;

int debug(int level, const char *format, ...) {
    if (level > highest_printed_level) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    return 1;
}

void set_debug_mode(int mode) {
    debug_flag = mode == 1 ? 1 : 0;
}

} // namespace renewer
