#pragma once

#include "platform/owner.h"
#include "simulator/unit/live.h"

#include <termios.h>
#include <thread>

namespace simulator {

// Lets a terminal's keyboard act as the keys of a running unit: arrows, Enter for ok, Esc, and p
// for the power key. A terminal does not report when a key is released, so each one is a short
// press.
class live_keys {
public:
    // Reads keys from standard input until the end of the scope, if it is a terminal and this
    // process runs in its foreground. `power` is the panel's power key.
    live_keys(live_hand &acting, key power);
    ~live_keys();
    live_keys(const live_keys &) = delete;
    live_keys &operator=(const live_keys &) = delete;

    bool reads_keys() const { return reader.joinable(); }

private:
    void read_keys();
    void press(key which);

    live_hand &hand;
    key power_key;
    termios before = {};
    renewer::owned_descriptor end_request, end_awaited; // a pipe
    std::thread reader;
};

} // namespace simulator
