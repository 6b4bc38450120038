#include "prompt/led_confirm.h"

#include "prompt/mw_key.h"

#include "simulator/in_process/asked.h"
#include "tests/support/files.h"
#include "tests/support/key_events.h"
#include "tests/support/printed.h"

#include <cmath>
#include <ctime>
#include <vector>

using namespace renewer;

namespace {

// What the key device, a file, and the clock hold once so many slices of the wait have passed.
// After the last event, reading the device finds its end, as with a pipe without a writer.
struct happening {
    int slice;
    event_bytes bytes;
    timespec time = {};
};

long slices() {
    return std::lround(asked().passed / 0.3);
}

void let_come(std::vector<happening> &to_come) {
    while (!to_come.empty() && to_come.front().slice <= slices()) {
        std::ofstream(key_device, std::ios::app | std::ios::binary) << to_come.front().bytes;
        asked().time = to_come.front().time;
        to_come.erase(to_come.begin());
    }
}

TEST(led_confirm, device_that_ends_between_events_and_the_2_s_of_a_lone_power_press) {
    const event_bytes ok = event_of(2, 1);
    const event_bytes power = event_of(3, 0);
    const event_bytes other = event_of(4, 1);
    const struct {
        const char *what;
        std::vector<happening> events;
        int interrupted;
        int answer;
        int after_slices;
    } cases[] = {
        {"ok as the first", {{0, ok}}, 0, 1, 0},
        {"ok released, held before", {{0, event_of(2, 0)}}, 0, 1, 0},
        {"ok after the device had ended", {{0, other}, {3, ok}}, 0, 1, 3},
        {"power twice, 0.3 s apart", {{1, power, {10, 0}}, {3, power, {10, 300'000'000}}}, 0, 0, 3},
        {"never a key", {}, 0, 0, 400},
        {"signals while it waits", {{7, ok}}, 3, 1, 7},
        {"power alone, 2 s", {{5, power, {10, 1}}, {6, "", {12, 1}}}, 0, 0, 400},
        {"power alone, 1 ns more", {{5, power, {10, 1}}, {6, "", {12, 2}}}, 0, 1, 7},
    };
    for (const auto &[what, events, interrupted, answer, after_slices] : cases) {
        SCOPED_TRACE(what);
        put_file(key_device, "");
        asked() = {};
        asked().interruptions = interrupted;
        asked().before = [to_come = events](std::string_view) mutable { let_come(to_come); };
        const int device = key_open(1);
        EXPECT_EQ(reply_of([&] { return wait_for_confirmation(device); }).value, answer);
        EXPECT_EQ(slices(), after_slices);
        EXPECT_EQ(asked().transcript.find("wait 0.001 s") != std::string::npos, interrupted > 0)
            << "an interrupted wait goes on with what is left of it";
        EXPECT_EQ(key_close(device), 0);
    }
}

} // namespace
