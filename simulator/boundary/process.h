#pragma once

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <dlfcn.h>

// The simulated unit at the system-call boundary: a library loaded into every process of a unit
// ahead of the C library (ld.so(8), LD_PRELOAD). It speeds up the unit's clock, makes LED files
// behave as in sysfs, answers the device requests that this kernel has no driver for, and reports
// to the desk what was requested.
//
// It is loaded into shells and small commands too, so it depends on the C library only.
namespace boundary {

// Whether this process is the program under observation; only its waits are reported.
extern bool is_program;

// How many shells fail to start, for commands that begin with `command`, and what system(3) then
// returns and leaves in errno.
struct failing_shells {
    long left = 0;
    const char *command = "";
    int status = -1;
    int reason = EAGAIN;
};
extern failing_shells no_shells;

// How many SPI transfers succeed before all others fail.
extern unsigned long spi_transfers_that_work;

// Sends one record to the desk (see protocol.h). Errors are ignored: the program must not notice
// that the desk is gone.
void send_record(const char *record, size_t size);

// Formats and sends a record, truncated to 4095 bytes.
[[gnu::format(printf, 1, 2)]] void report(const char *format, ...);

// Sends a wait of the program as "sleep 0.1 s"; those of shells and scripts are not reported.
inline void report_span(const char *kind, double seconds) {
    if (is_program) {
        report("%s %.10g s", kind, seconds);
    }
}

// Sends a record of any length without allocating: `system` may also be called in a signal handler.
void report_long(const char *kind, const char *text);

// The path of the file behind a descriptor (proc(5), /proc/pid/fd); empty if there is none.
void descriptor_path(int descriptor, char (&path)[256]);

// Whether the C library has a second, differently named function for each one that takes times or
// file sizes (feature_test_macros(7), _TIME_BITS). The program calls the second one, and the
// definitions here get its name too, because they are compiled with the same setting.
inline constexpr bool has_wide_functions = sizeof(time_t) > sizeof(long);
inline constexpr const char *real_nanosleep = has_wide_functions ? "__nanosleep64" : "nanosleep";
inline constexpr const char *real_select = has_wide_functions ? "__select64" : "select";

// The definition that this one hides: the C library's, or a sanitizer's in front of it.
template <typename function>
function *next(const char *name) {
    return reinterpret_cast<function *>(dlsym(RTLD_NEXT, name));
}

} // namespace boundary
