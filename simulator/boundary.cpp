// The unit at the system-call boundary: loaded into every process of a simulated unit ahead of the
// C library (ld.so(8), LD_PRELOAD). It runs the unit's clock faster, gives LED files the manners
// of sysfs, answers what the kernel here lacks, and tells the desk what was asked for.
//
// It is loaded into shells and small commands too, so it needs nothing but the C library.

#include "simulator/boundary.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using simulator::record_path;

double speed = 1;
bool is_program = false;

// The next definition of a function: the C library's, or a sanitizer's in front of it.
template <typename function>
function *next(const char *name) {
    return reinterpret_cast<function *>(dlsym(RTLD_NEXT, name));
}

// Sends one record to the desk; a desk that is gone is not the program's trouble. The socket is
// opened for each record, so that no descriptor of the program's is ever taken or closed.
void send_record(const char *record, size_t size) {
    const int saved_errno = errno;
    const int socket_fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket_fd >= 0) {
        sockaddr_un address = {AF_UNIX, {}};
        strcpy(address.sun_path, record_path);
        sendto(socket_fd, record, size, MSG_NOSIGNAL, reinterpret_cast<sockaddr *>(&address),
               sizeof(address));
        close(socket_fd);
    }
    errno = saved_errno;
}

[[gnu::format(printf, 1, 2)]] void tell(const char *format, ...) {
    char record[4096];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(record, sizeof(record), format, arguments);
    va_end(arguments);
    if (length > 0) {
        const size_t size = static_cast<size_t>(length);
        send_record(record, size < sizeof(record) ? size : sizeof(record) - 1);
    }
}

void tell_long(const char *kind, const char *text) {
    const size_t size = strlen(kind) + 1 + strlen(text);
    char *record = static_cast<char *>(malloc(size + 1));
    if (record != nullptr) {
        sprintf(record, "%s %s", kind, text);
        send_record(record, size);
        free(record);
    }
}

[[gnu::constructor]] void begin() {
    const char *text = getenv(simulator::speed_variable);
    if (text != nullptr && strtod(text, nullptr) > 0) {
        speed = strtod(text, nullptr);
    }
    is_program = getenv(simulator::program_variable) != nullptr;
    unsetenv(simulator::program_variable);
}

[[gnu::destructor]] void end() {
    rusage usage = {};
    if (is_program && getrusage(RUSAGE_SELF, &usage) == 0) {
        tell("memory %ld", usage.ru_maxrss);
    }
}

timespec to_desk(double unit_seconds) {
    const double desk = unit_seconds / speed;
    timespec result = {};
    result.tv_sec = static_cast<time_t>(desk);
    result.tv_nsec = static_cast<long>((desk - static_cast<double>(result.tv_sec)) * 1e9);
    return result;
}

double seconds(const timespec &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double seconds(const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// Only the program's own waits are told; those of the shells and scripts are theirs.
void tell_span(const char *kind, double unit_seconds) {
    if (is_program) {
        tell("%s %.10g s", kind, unit_seconds);
    }
}

// Sleeps the span on the unit's clock; gives what was left of it when a signal ended the sleep.
double sleep_for(double unit_seconds) {
    const timespec span = to_desk(unit_seconds);
    timespec left = {};
    if (next<decltype(nanosleep)>("nanosleep")(&span, &left) == 0) {
        return 0;
    }
    return seconds(left) * speed;
}

// The path that a descriptor was opened by (proc(5), /proc/pid/fd).
void descriptor_path(int descriptor, char (&path)[256]) {
    char link[64];
    snprintf(link, sizeof(link), "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof(path) - 1);
    path[length > 0 ? length : 0] = '\0';
}

// The LED whose brightness file this is, in place at the start of `path`; null for other files.
const char *led_of(char (&path)[256]) {
    constexpr char directory[] = "/sys/class/leds/";
    if (strncmp(path, directory, strlen(directory)) != 0) {
        return nullptr;
    }
    char *name = path + strlen(directory);
    char *file = strchr(name, '/');
    if (file == nullptr || strcmp(file, "/brightness") != 0) {
        return nullptr;
    }
    *file = '\0';
    return name;
}

} // namespace

extern "C" {

unsigned sleep(unsigned span) {
    tell_span("sleep", span);
    return static_cast<unsigned>(sleep_for(span));
}

int usleep(useconds_t span) {
    tell_span("sleep", static_cast<double>(span) / 1e6);
    return sleep_for(static_cast<double>(span) / 1e6) > 0 ? -1 : 0;
}

int nanosleep(const timespec *span, timespec *left) {
    tell_span("sleep", seconds(*span));
    const double remaining = sleep_for(seconds(*span));
    if (remaining <= 0) {
        return 0;
    }
    if (left != nullptr) {
        left->tv_sec = static_cast<time_t>(remaining);
        left->tv_nsec = static_cast<long>((remaining - static_cast<double>(left->tv_sec)) * 1e9);
    }
    return -1;
}

// What Debian's sleep(1) calls; a relative sleep is all that is asked for in a unit.
int clock_nanosleep(clockid_t, int, const timespec *span, timespec *left) {
    return nanosleep(span, left) == 0 ? 0 : errno;
}

int clock_gettime(clockid_t clock, timespec *time) {
    const int result = next<decltype(clock_gettime)>("clock_gettime")(clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC_RAW && speed != 1) {
        const double unit = seconds(*time) * speed;
        time->tv_sec = static_cast<time_t>(unit);
        time->tv_nsec = static_cast<long>((unit - static_cast<double>(time->tv_sec)) * 1e9);
    }
    return result;
}

int select(int count, fd_set *reads, fd_set *writes, fd_set *others, timeval *limit) {
    const auto real = next<decltype(select)>("select");
    if (limit == nullptr) {
        return real(count, reads, writes, others, limit);
    }
    tell_span("wait", seconds(*limit));
    const timespec span = to_desk(seconds(*limit));
    timeval left = {span.tv_sec, static_cast<suseconds_t>(span.tv_nsec / 1000)};
    const int result = real(count, reads, writes, others, &left);
    const double remaining = seconds(left) * speed;
    limit->tv_sec = static_cast<time_t>(remaining);
    limit->tv_usec =
        static_cast<suseconds_t>((remaining - static_cast<double>(limit->tv_sec)) * 1e6);
    return result;
}

unsigned alarm(unsigned span) {
    tell_span("alarm", span);
    constexpr unsigned longest = 100'000'000; // beyond it the desk's timers have no use
    const timespec desk = to_desk(span < longest ? span : longest);
    const itimerval timer = {{}, {desk.tv_sec, static_cast<suseconds_t>(desk.tv_nsec / 1000)}};
    itimerval before = {};
    setitimer(ITIMER_REAL, &timer, &before);
    return static_cast<unsigned>(seconds(before.it_value) * speed + 0.999);
}

int system(const char *command) {
    tell_long("shell", command);
    return next<decltype(system)>("system")(command);
}

int kill(pid_t process, int signal) {
    if (signal != 0 && is_program) {
        tell("signal %d to %s", signal, process < 0 ? "group" : "process");
    }
    return next<decltype(kill)>("kill")(process, signal);
}

ssize_t write(int descriptor, const void *bytes, size_t count) {
    const auto real = next<decltype(write)>("write");
    char path[256];
    descriptor_path(descriptor, path);
    const char *led = led_of(path);
    if (led == nullptr) {
        return real(descriptor, bytes, count);
    }
    // A sysfs attribute takes each write as a whole new value, with or without a line end.
    const char *text = static_cast<const char *>(bytes);
    const void *line_end = memchr(text, '\n', count);
    const size_t shown = line_end == nullptr
                             ? count
                             : static_cast<size_t>(static_cast<const char *>(line_end) - text);
    tell("led %s %.*s", led, static_cast<int>(shown), text);
    if (ftruncate(descriptor, 0) != 0) {
        return -1;
    }
    lseek(descriptor, 0, SEEK_SET);
    return real(descriptor, bytes, count);
}

} // extern "C"
