// The unit's clock: what waits and what tells the time.

#include "simulator/boundary/process.h"

#include <cerrno>
#include <ctime>
#include <sys/select.h>
#include <sys/time.h>
#include <unistd.h>

using namespace boundary;

namespace {

constexpr const char *real_clock_gettime =
    has_wide_functions ? "__clock_gettime64" : "clock_gettime";
constexpr const char *real_select = has_wide_functions ? "__select64" : "select";

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
    if (next<decltype(nanosleep)>(real_nanosleep)(&span, &left) == 0) {
        return 0;
    }
    return seconds(left) * speed;
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
    const int result = next<decltype(clock_gettime)>(real_clock_gettime)(clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC_RAW && speed != 1) {
        const double unit = seconds(*time) * speed;
        time->tv_sec = static_cast<time_t>(unit);
        time->tv_nsec = static_cast<long>((unit - static_cast<double>(time->tv_sec)) * 1e9);
    }
    return result;
}

int select(int count, fd_set *reads, fd_set *writes, fd_set *others, timeval *limit) {
    const auto real = next<decltype(select)>(real_select);
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

} // extern "C"
