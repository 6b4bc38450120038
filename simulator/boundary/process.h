#pragma once

#include <cerrno>
#include <cstddef>
#include <ctime>
#include <dlfcn.h>

// The unit at the system-call boundary: loaded into every process of a simulated unit ahead of the
// C library (ld.so(8), LD_PRELOAD). It runs the unit's clock faster, gives LED files the manners
// of sysfs, answers what the kernel here lacks, and tells the desk what was asked for.
//
// It is loaded into shells and small commands too, so it needs nothing but the C library.
namespace boundary {

// Whether this process is the program under observation.
extern bool is_program;

// So many shells that cannot be started, for commands that begin with a text, and what system(3)
// then returns and leaves in errno.
struct failing_shells {
    long left = 0;
    const char *command = "";
    int status = -1;
    int reason = EAGAIN;
};
extern failing_shells no_shells;

// How many SPI transfers work before all others fail.
extern unsigned long spi_transfers_that_work;

// Sends one record to the desk (see protocol.h); a desk that is gone is not the program's trouble.
void send_record(const char *record, size_t size);

// Sends a record, cut to a few KiB.
[[gnu::format(printf, 1, 2)]] void tell(const char *format, ...);

// Sends a span of the program's time, as "sleep 0.1 s"; those of the shells and scripts are theirs.
inline void tell_span(const char *kind, double seconds) {
    if (is_program) {
        tell("%s %.10g s", kind, seconds);
    }
}

// Sends a record of any length, without memory of its own: `system` is called in the context of a
// signal too.
void tell_long(const char *kind, const char *text);

// The path that a descriptor was opened by (proc(5), /proc/pid/fd); empty when it has none.
void descriptor_path(int descriptor, char (&path)[256]);

// Whether the C library has a second function, of another name, for each that takes times or sizes
// of files (feature_test_macros(7), _TIME_BITS): the program calls that one, and what is defined
// here under the usual name has its name too.
inline constexpr bool has_wide_functions = sizeof(time_t) > sizeof(long);
inline constexpr const char *real_nanosleep = has_wide_functions ? "__nanosleep64" : "nanosleep";
inline constexpr const char *real_select = has_wide_functions ? "__select64" : "select";

// The next definition of a function: the C library's, or a sanitizer's in front of it.
template <typename function>
function *next(const char *name) {
    return reinterpret_cast<function *>(dlsym(RTLD_NEXT, name));
}

} // namespace boundary
