#include "prompt/mw_key.h"

#include "platform/owner.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace renewer {

namespace {

constinit owned_memory<key_event> input;      // the event being read
constinit owned_memory<key_event> input_last; // the last event with a code
bool device_lost = false;

key_stamp ok_down_t, ok_up_t;
key_stamp right_down_t, right_up_t;
key_stamp left_down_t, left_up_t;
key_stamp down_down_t, down_up_t;
key_stamp up_down_t, up_up_t;
key_stamp esc_down_t, esc_up_t;

struct key_times {
    key_stamp *down;
    key_stamp *up;
    const char *label;
};

// In the order of the key codes, from key_ok to key_power.
constexpr std::array<key_times, 7> keys = {{
    {&ok_down_t, &ok_up_t, "ok button"},
    {&right_down_t, &right_up_t, "right_button"},
    {&left_down_t, &left_up_t, "left button"},
    {&down_down_t, &down_up_t, "down button"},
    {&up_down_t, &up_up_t, "up button"},
    {&esc_down_t, &esc_up_t, "esc button"},
    {&esc_down_t, &esc_up_t, "power button"}, // shares the times of esc
}};

constexpr bool is_key(int code) {
    return code >= key_ok && code <= key_power;
}

const key_times &times_of(int code) {
    return keys[static_cast<size_t>(code - key_ok)];
}

bool allocate(owned_memory<key_event> &event) {
    if (event == nullptr) {
        event.reset(static_cast<key_event *>(calloc(1, sizeof(key_event))));
    }
    return event != nullptr;
}

bool read_event(int fd) {
    if (input == nullptr || input_last == nullptr) {
        device_lost = true;
        return false;
    }
    // After a short read the rest of the event is zero, not that of the event before.
    *input = {};
    const ssize_t taken = read(fd, input.get(), sizeof(*input));
    device_lost = taken == 0 || (taken < 0 && errno != EINTR && errno != EAGAIN);
    return taken > 0;
}

void take_press(int code, key_stamp stamp) {
    *times_of(code).down = stamp;
    if (code == key_ok) {
        printf("ok_down_t->time:%lds\n", static_cast<long>(ok_down_t.seconds));
    }
}

unsigned take_release(int code, key_stamp stamp) {
    const key_times &key = times_of(code);
    *key.up = stamp;
    const unsigned held = time_diff_valid(*key.down, *key.up);
    *key.down = {};
    *key.up = {};
    printf("%s is pressed:%us\n", key.label, held);
    return held;
}

} // namespace

int key_open(int block) {
    const int flags = block == 0 ? O_NONBLOCK : 0;
    owned_descriptor device(open("/dev/input/event1", O_RDONLY | O_CLOEXEC | flags));
    if (!device || !allocate(input) || !allocate(input_last)) {
        return -1;
    }
    return device.release();
}

int key_close(int fd) {
    input.reset();
    input_last.reset();
    return close(fd);
}

int get_key_info(int fd, key_stamp *stamp) {
    // Each key event is followed by a synchronisation event, whose code is 0 (EV_SYN, SYN_REPORT).
    if (!read_event(fd) || input->code == 0) {
        return key_none;
    }
    printf("@%d  %d %d\n", input->code, input->value, input->seconds);
    *stamp = {input->seconds, input->microseconds};
    *input_last = *input;
    return input->value == 0 ? input->code + key_released : input->code;
}

int key_get(int fd, unsigned *duration) {
    key_stamp stamp = {};
    const int code = get_key_info(fd, &stamp);
    if (code > 0) {
        printf("get the code is :%d.\n", code);
    }
    if (is_key(code)) {
        take_press(code, stamp);
        *duration = 0;
        return code;
    }
    if (is_key(code - key_released)) {
        *duration = take_release(code - key_released, stamp);
        return code;
    }
    return key_none;
}

bool key_device_lost() {
    return device_lost;
}

unsigned time_diff_valid(key_stamp press, key_stamp release) {
    const int64_t seconds = int64_t{release.seconds} - press.seconds;
    const int64_t microseconds = int64_t{release.microseconds} - press.microseconds;
    const int64_t elapsed = seconds * 1000 + microseconds / 1000;
    // The unit's clock may have been set between the two.
    if (elapsed < 0) {
        return 0;
    }
    // Whole seconds, half a second rounded down.
    return static_cast<unsigned>(elapsed / 1000 + (elapsed % 1000 > 500 ? 1 : 0));
}

int get_gpio_info(int) {
    const int value = input_last == nullptr ? 0 : input_last->value;
    printf("xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx%d\n", value);
    return value;
}

int keycontrol(int, int, int, int) {
    return -1;
}

} // namespace renewer
