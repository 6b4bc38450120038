#pragma once

#include <cerrno>
#include <sys/select.h>

namespace renewer {

// Waits until the key device can be read or the time-out has passed. Without a device it only
// waits. What is left of the time-out is then in `time_out` (select(2), Linux); a wait that a
// signal interrupts goes on with it.
//
// Returns 1 readable, 0 timed out, -1 failed.
inline int wait_for_key(int key_fd, timeval *time_out) {
    const bool watched = key_fd >= 0 && key_fd < FD_SETSIZE;
    int ready;
    do {
        fd_set readable;
        FD_ZERO(&readable);
        if (watched) {
            FD_SET(key_fd, &readable);
        }
        ready = select(watched ? key_fd + 1 : 0, &readable, nullptr, nullptr, time_out);
    } while (ready < 0 && errno == EINTR);
    return ready;
}

} // namespace renewer
