// The unit's clock: functions that wait or read the time.

#include "simulator/boundary/process.h"
#include "simulator/boundary/time.h"

#include <cerrno>
#include <ctime>
#include <sys/time.h>
#include <unistd.h>

using namespace boundary;

namespace {

constexpr const char *real_clock_gettime =
    has_wide_functions ? "__clock_gettime64" : "clock_gettime";

} // namespace

extern "C" {

unsigned sleep(unsigned span) {
    report_span("sleep", span);
    return static_cast<unsigned>(pass(span));
}

int usleep(useconds_t span) {
    report_span("sleep", static_cast<double>(span) / 1e6);
    return pass(static_cast<double>(span) / 1e6) > 0 ? -1 : 0;
}

int nanosleep(const timespec *span, timespec *left) {
    report_span("sleep", seconds_of(*span));
    const double remaining = pass(seconds_of(*span));
    if (remaining <= 0) {
        return 0;
    }
    if (left != nullptr) {
        *left = timespec_of(remaining);
    }
    return -1;
}

// Debian's sleep(1) calls this one. Only relative sleeps occur in a unit.
int clock_nanosleep(clockid_t, int, const timespec *span, timespec *left) {
    return nanosleep(span, left) == 0 ? 0 : errno;
}

int clock_gettime(clockid_t clock, timespec *time) {
    const int result = next<decltype(clock_gettime)>(real_clock_gettime)(clock, time);
    if (result == 0 && clock == CLOCK_MONOTONIC_RAW) {
        *time = unit_time(*time);
    }
    return result;
}

int select(int count, fd_set *reads, fd_set *writes, fd_set *others, timeval *limit) {
    if (limit == nullptr) {
        return wait_for(count, reads, writes, others, nullptr);
    }
    double left = seconds_of(*limit);
    report_span("wait", left);
    const int result = wait_for(count, reads, writes, others, &left);
    *limit = timeval_of(left);
    return result;
}

} // extern "C"
