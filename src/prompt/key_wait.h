#pragma once

#include <sys/select.h>

namespace renewer {

// Waits until the key device can be read or the time-out has passed. Without a device it only
// waits. What is left of the time-out is then in `time_out` (select(2), Linux).
//
// Returns 1 readable, 0 timed out, -1 failed.
inline int wait_for_key(int key_fd, timeval *time_out) {
    if (key_fd < 0 || key_fd >= FD_SETSIZE) {
        return select(0, nullptr, nullptr, nullptr, time_out);
    }
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(key_fd, &readable);
    return select(key_fd + 1, &readable, nullptr, nullptr, time_out);
}

} // namespace renewer
