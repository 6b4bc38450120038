#pragma once

#include <cstddef>
#include <cstdint>

// The front-panel keys, through the kernel's input subsystem ("/dev/input/event1"). One device at
// a time, on one thread. The module never waits: its callers wait for the descriptor to become
// readable and then read one event.
namespace renewer {

// One input event as the kernel of a 32-bit unit writes it: struct input_event of linux/input.h
// with 32-bit times (the build machine's own may be longer). Host byte order.
struct key_event {
    int32_t seconds;
    int32_t microseconds;
    uint16_t type;
    uint16_t code; // the key; 0 for none, as in the synchronisation event after each key event
    int32_t value; // 0 release, 1 press, 2 auto-repeat
};
static_assert(sizeof(key_event) == 16);
static_assert(offsetof(key_event, type) == 8 && offsetof(key_event, code) == 10 &&
              offsetof(key_event, value) == 12);

// Time of an event.
struct key_stamp {
    int32_t seconds;
    int32_t microseconds;
};

// Key codes: the event's code for a press or an auto-repeat, 10 more for a release.
enum key_code : int {
    key_ok = 2,
    key_right = 3,
    key_left = 4,
    key_down = 5,
    key_up = 6,
    key_esc = 7,
    key_power = 8,
};
constexpr int key_released = 10;
constexpr int key_none = -1;

// Opens the key device for reading, non-blocking when `block` is 0.
//
// Returns the descriptor, which the caller closes with `key_close`; -1, and prints nothing, when
// the device cannot be opened or there is no memory for its events.
int key_open(int block);

// Forgets the events read so far and closes `fd`. Returns the result of closing.
int key_close(int fd);

// Reads one event, prints it as "@<code>  <value> <seconds>" and stores its time in `stamp`.
//
// Returns its key code (any, not only those of the seven keys); -1, with nothing printed and
// `stamp` as it was, when nothing could be read or the event's code is 0.
int get_key_info(int fd, key_stamp *stamp);

// Reads one event, keeps its time for its key, and prints its key code and, for a release, how long
// the key was held. esc and power share one pair of times.
//
// Returns the key code: 2 to 8 for a press or auto-repeat, with 0 in `duration`; 12 to 18 for a
// release, with the whole seconds since the press in `duration` (since 0 of the events' clock when
// no press was seen); -1 for every other event and when nothing could be read, with `duration` as
// it was.
int key_get(int fd, unsigned *duration);

// Whether the last read returned nothing although the descriptor was readable: end of file or an
// error, as with a device that is gone. An interrupted read, or one that would block, does not
// count.
bool key_device_lost();

// Whole seconds from press to release: milliseconds, rounded up from 501 on. 0 when the release is
// the earlier one, as after the clock was set back.
unsigned time_diff_valid(key_stamp press, key_stamp release);

// Prints and returns the value of the last event with a code (1 press, 0 release, 2 auto-repeat);
// 0 when there was none since `key_open`. The argument is ignored.
int get_gpio_info(int);

// Does nothing and returns -1: the keys have nothing to control.
int keycontrol(int, int, int, int);

} // namespace renewer
