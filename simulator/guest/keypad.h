#pragma once

#include "platform/owner.h"
#include "simulator/unit/failure.h"

#include <cstdint>

namespace simulator {

// An input device of the kernel whose keys this process presses (uinput).
class keypad {
public:
    // The first one becomes "/dev/input/event0", the next one event1. Throws if the kernel refuses.
    explicit keypad(const char *name);

    // Sends a key event and its synchronisation event. `value`: 1 press, 0 release.
    void event(uint16_t code, int32_t value);

private:
    renewer::owned_descriptor device;
};

} // namespace simulator
