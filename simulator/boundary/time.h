#pragma once

#include <ctime>
#include <sys/select.h>

// How time passes: in a unit as on the desk, but faster; in a test's own process waits end at once.
namespace boundary {

inline double seconds_of(const timespec &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

inline double seconds_of(const timeval &time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

inline timespec timespec_of(double seconds) {
    const auto whole = static_cast<time_t>(seconds);
    return {whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e9)};
}

inline timeval timeval_of(double seconds) {
    const timespec time = timespec_of(seconds);
    return {time.tv_sec, static_cast<suseconds_t>(time.tv_nsec / 1000)};
}

// Waits for `seconds`. Returns what is left of them if a signal ended the wait early, else 0.
double pass(double seconds);

// select(2); `seconds` is its time-out (null for none) and is set to what is left of it.
int wait_for(int count, fd_set *reads, fd_set *writes, fd_set *others, double *seconds);

// The time of the unit's clock at this time of the desk's.
timespec unit_time(const timespec &desk);

} // namespace boundary
