#include "prompt/led_confirm.h"

#include "platform/debug.h"
#include "prompt/key_wait.h"
#include "prompt/led_pattern.h"
#include "prompt/mw_key.h"

#include <cstdio>
#include <ctime>

namespace renewer {

namespace {

constexpr int declined = 0;
constexpr int confirmed = 1;
constexpr int undecided = 2;

constexpr int slice_ms = 300;
constexpr int budget_ms = 120000;
constexpr double lone_power_press_s = 2.0;
constexpr int power_key_released = key_right + key_released;
// Steps 0 and 100 are both even, so the LEDs stay on for two steps when the count starts again.
constexpr int last_blink = 100;

struct question {
    int key_fd;
    timeval time_out;  // left of the running slice: a key event does not lengthen it
    int left_ms;       // of the budget, in whole slices
    int power_presses; // releases of the power key
    timespec power_press_time;
    int blink;
};

constexpr timeval whole_slice = {0, slice_ms * 1000};

int take_power_press(question &asked) {
    clock_gettime(CLOCK_MONOTONIC_RAW, &asked.power_press_time);
    ++asked.power_presses;
    debug(5, "wait for next push!\n");
    return asked.power_presses > 1 ? declined : undecided;
}

int take_silence(question &asked) {
    asked.time_out = whole_slice;
    // Only slices without a key are counted.
    asked.left_ms -= slice_ms;
    return asked.left_ms <= 0 ? declined : undecided;
}

// A device that has ended or failed stays readable, so waiting for it would spin. It may come back,
// as a pipe does with its next writer; so only the rest of the slice passes without it.
int sit_out_slice(question &asked) {
    return wait_for_key(-1, &asked.time_out) < 0 ? declined : take_silence(asked);
}

int take_key(question &asked) {
    puts("get a key");
    unsigned duration = 0;
    switch (key_get(asked.key_fd, &duration)) {
    case key_ok:
    // A release alone counts too: the key may have been pressed before the question.
    case key_ok + key_released:
        return confirmed;
    case power_key_released:
        return take_power_press(asked);
    default:
        return key_device_lost() ? sit_out_slice(asked) : undecided;
    }
}

int wait_one_slice(question &asked) {
    const int ready = wait_for_key(asked.key_fd, &asked.time_out);
    if (ready < 0) {
        return declined;
    }
    return ready > 0 ? take_key(asked) : take_silence(asked);
}

bool power_pressed_alone(const question &asked) {
    if (asked.power_presses == 0) {
        return false;
    }
    timespec now = {};
    // A clock that nobody sets: GNSS time may arrive at any moment.
    clock_gettime(CLOCK_MONOTONIC_RAW, &now);
    const double seconds = static_cast<double>(now.tv_sec - asked.power_press_time.tv_sec) +
                           static_cast<double>(now.tv_nsec - asked.power_press_time.tv_nsec) / 1e9;
    return seconds > lone_power_press_s;
}

void blink(question &asked) {
    show_leds(asked.blink % 2 == 0 ? five_on : five_off);
    asked.blink = asked.blink == last_blink ? 0 : asked.blink + 1;
}

int ask(question &asked) {
    for (;;) {
        const int answer = wait_one_slice(asked);
        if (answer != undecided) {
            return answer;
        }
        if (power_pressed_alone(asked)) {
            puts("poweroff button press one time 2 second");
            return confirmed;
        }
        blink(asked);
    }
}

} // namespace

int wait_for_confirmation(int key_fd) {
    question asked = {};
    asked.key_fd = key_fd;
    asked.time_out = whole_slice;
    asked.left_ms = budget_ms;
    const int answer = ask(asked);
    show_leds(five_off);
    return answer;
}

} // namespace renewer
