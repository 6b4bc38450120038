#include "prompt/led_confirm.h"

#include "prompt/mw_key.h"

#include "tests/support/files.h"
#include "tests/support/key_events.h"
#include "tests/support/printed.h"

#include <cerrno>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/select.h>
#include <vector>

using namespace renewer;

namespace {

// What comes from the key device, a file: when nothing more does, reading it gives its end, as from
// a pipe without a writer. Time passes by the waits in which the device is not watched.
struct happening {
    int slice;
    event_bytes bytes;
};
std::vector<happening> to_come;
int slices = 0;
int interruptions = 0;
timeval left_over = {};
std::vector<timespec> clock_times; // one for each question for the time, the last for all others

void let_come() {
    while (!to_come.empty() && to_come.front().slice <= slices) {
        std::ofstream(key_device, std::ios::app | std::ios::binary) << to_come.front().bytes;
        to_come.erase(to_come.begin());
    }
}

} // namespace

extern "C" int select(int count, fd_set *, fd_set *, fd_set *, timeval *limit) {
    if (count > 0) {
        return 1;
    }
    if (left_over.tv_usec != 0) {
        EXPECT_EQ(limit->tv_usec, left_over.tv_usec); // an interrupted wait goes on
        left_over = {};
    }
    if (interruptions > 0) {
        --interruptions;
        *limit = left_over = {0, 1 + interruptions};
        errno = EINTR;
        return -1;
    }
    *limit = {};
    ++slices;
    let_come();
    return 0;
}

extern "C" int clock_gettime(clockid_t clock, timespec *time) noexcept {
    if (clock != CLOCK_MONOTONIC_RAW || clock_times.empty()) {
        return reinterpret_cast<int (*)(clockid_t, timespec *)>(dlsym(RTLD_NEXT, "clock_gettime"))(
            clock, time);
    }
    *time = clock_times.front();
    if (clock_times.size() > 1) {
        clock_times.erase(clock_times.begin());
    }
    return 0;
}

namespace {

TEST(led_confirm, device_that_ends_between_events_and_the_2_s_of_a_lone_power_press) {
    const event_bytes ok = event_of(2, 1);
    const event_bytes power = event_of(3, 0);
    const event_bytes other = event_of(4, 1);
    const struct {
        const char *what;
        std::vector<happening> events;
        std::vector<timespec> times;
        int interrupted;
        int answer;
        int after_slices;
    } cases[] = {
        {"ok as the first", {{0, ok}}, {}, 0, 1, 0},
        {"ok released, held before", {{0, event_of(2, 0)}}, {}, 0, 1, 0},
        {"ok after the device had ended", {{0, other}, {3, ok}}, {}, 0, 1, 3},
        {"power twice, 0.6 s apart",
         {{1, power}, {3, power}},
         {{10, 0}, {10, 300'000'000}},
         0,
         0,
         3},
        {"never a key", {}, {}, 0, 0, 400},
        {"signals while it waits", {{7, ok}}, {}, 3, 1, 7},
        {"power alone, 2 s", {{5, power}}, {{10, 1}, {12, 1}}, 0, 0, 400},
        {"power alone, 1 ns more", {{5, power}}, {{10, 1}, {12, 2}}, 0, 1, 5},
    };
    for (const auto &[what, events, times, interrupted, answer, after_slices] : cases) {
        SCOPED_TRACE(what);
        put_file(key_device, "");
        to_come = events;
        slices = 0;
        interruptions = interrupted;
        clock_times = times;
        let_come();
        const int device = key_open(1);
        EXPECT_EQ(reply_of([&] { return wait_for_confirmation(device); }).value, answer);
        EXPECT_EQ(slices, after_slices);
        EXPECT_EQ(key_close(device), 0);
    }
}

} // namespace
