// Time in a unit: the desk's, sped up.

#include "simulator/boundary/process.h"
#include "simulator/boundary/protocol.h"
#include "simulator/boundary/time.h"

#include <algorithm>
#include <cstdlib>
#include <sys/time.h>
#include <unistd.h>

namespace boundary {

namespace {

double speed = 1;

[[gnu::constructor]] void take_speed() {
    const char *text = getenv(simulator::speed_variable);
    if (text != nullptr && strtod(text, nullptr) > 0) {
        speed = strtod(text, nullptr);
    }
}

} // namespace

double pass(double seconds) {
    const timespec span = timespec_of(seconds / speed);
    timespec left = {};
    const bool whole = next<decltype(nanosleep)>(real_nanosleep)(&span, &left) == 0;
    return whole ? 0 : seconds_of(left) * speed;
}

int wait_for(int count, fd_set *reads, fd_set *writes, fd_set *others, double *seconds) {
    const auto real = next<decltype(select)>(real_select);
    if (seconds == nullptr) {
        return real(count, reads, writes, others, nullptr);
    }
    timeval left = timeval_of(*seconds / speed);
    const int result = real(count, reads, writes, others, &left);
    *seconds = seconds_of(left) * speed;
    return result;
}

timespec unit_time(const timespec &desk) {
    return speed == 1 ? desk : timespec_of(seconds_of(desk) * speed);
}

} // namespace boundary

using namespace boundary;

extern "C" unsigned alarm(unsigned span) {
    report_span("alarm", span);
    constexpr unsigned longest =
        100'000'000; // far beyond any run, and small enough for the desk's timer
    const itimerval timer = {{}, timeval_of(std::min(span, longest) / speed)};
    itimerval before = {};
    setitimer(ITIMER_REAL, &timer, &before);
    return static_cast<unsigned>(seconds_of(before.it_value) * speed + 0.999);
}
