#include "simulator/guest/keypad.h"

#include <cstring>
#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>

namespace simulator {

namespace {

constexpr int last_code = 8; // the panel's keys have the codes 2 to 8

} // namespace

keypad::keypad(const char *name) : device(open("/dev/uinput", O_WRONLY | O_CLOEXEC)) {
    uinput_setup setup = {};
    strncpy(setup.name, name, sizeof(setup.name) - 1);
    bool made = ioctl(device.get(), UI_SET_EVBIT, EV_KEY) == 0;
    for (int code = 1; code <= last_code; ++code) {
        made = made && ioctl(device.get(), UI_SET_KEYBIT, code) == 0;
    }
    if (!made || ioctl(device.get(), UI_DEV_SETUP, &setup) != 0 ||
        ioctl(device.get(), UI_DEV_CREATE) != 0) {
        fail("/dev/uinput");
    }
}

void keypad::event(uint16_t code, int32_t value) {
    input_event events[2] = {};
    events[0].type = EV_KEY;
    events[0].code = code;
    events[0].value = value;
    events[1].type = EV_SYN;
    if (write(device.get(), events, sizeof(events)) != sizeof(events)) {
        fail("/dev/uinput");
    }
}

} // namespace simulator
