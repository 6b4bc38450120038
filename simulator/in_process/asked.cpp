#include "simulator/in_process/asked.h"

#include "simulator/boundary/process.h"
#include "simulator/boundary/time.h"
#include "simulator/in_process/spi_boundary.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

asked_of_system &asked() {
    static asked_of_system the_process;
    return the_process;
}

void let_shells_fail(int count, int status, int reason) {
    boundary::no_shells = {count, "", status, reason};
}

// The in-process version of where records go and how time passes.
namespace boundary {

bool is_program = true;

void report(const char *format, ...) {
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    report_long(line, "");
}

void report_long(const char *kind, const char *text) {
    const int saved_errno = errno;
    const std::string line = std::string(kind) + text;
    if (line.starts_with("ended ")) {
        spi().take_lines_of_panel();
    } else {
        if (asked().before) {
            asked().before(line);
        }
        asked().transcript += line + "\n";
    }
    errno = saved_errno;
}

double pass(double seconds) {
    asked().passed += seconds;
    return 0;
}

// The time-out expires at once if nothing can be read.
int wait_for(int count, fd_set *reads, fd_set *writes, fd_set *others, double *seconds) {
    timeval at_once = {};
    const int ready = next<decltype(select)>(real_select)(count, reads, writes, others, &at_once);
    if (ready != 0) {
        return ready;
    }
    const bool interrupted = count == 0 && asked().interruptions > 0;
    const double left = interrupted ? std::min(*seconds, 0.001) : 0;
    asked().passed += *seconds - left;
    asked().interruptions -= interrupted ? 1 : 0;
    *seconds = left;
    errno = EINTR;
    return interrupted ? -1 : 0;
}

timespec unit_time(const timespec &) {
    return asked().time;
}

} // namespace boundary
