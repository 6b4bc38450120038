#pragma once

#include <chrono>
#include <string>
#include <string_view>

// What happens in a unit, and when.
namespace simulator {

using namespace std::chrono_literals;

// Time of the unit's clock, which can run faster than the desk's (`clock_speed`).
using unit_time = std::chrono::milliseconds;

enum class event_kind {
    out,    // a line (or an unfinished line) on the program's standard output
    err,    // the same on its standard error
    led,    // "Light_Gps 255": a value was written to an LED-class file
    shell,  // a command line that the program handed to the system shell
    alarm,  // "60 s": a time limit was set; "0 s": it was cancelled
    signal, // "15 to install.sh": a signal was sent
    sleep,  // "10 s", "0.1 s": a sleep was requested
    wait,   // "0.3 s": a wait for a descriptor was requested
    spi,    // "command 2A", "data 00 7D", "pixels 4096": a transfer to the panel
    screen, // "picture 0": the panel shows another picture, see `outcome::pictures`
    call, // a stand-in for a command of the unit ran: "rc.stop", "reboot"; "S080_application ended"
    act,  // a planned action: "press ok", "remove /tmp/update_over"
    exit, // "status 0", "signal 9": the program ended
};

std::string_view name_of(event_kind kind); // "out", "err", "led" and so on

struct event {
    unit_time at; // since the program was started
    event_kind kind;
    std::string text;
    bool background = false; // by a thread of the program other than the main thread

    std::string line() const; // "led Light_Gps 255"
};

// A moment of a run: `delay` after the `occurrence`-th event whose line (see `event::line`)
// contains `line`; an empty `line` is the start of the run.
struct moment {
    std::string line;
    unit_time delay{};
    int occurrence = 1;
};

inline moment after(std::string line, unit_time delay, int occurrence = 1) {
    return {std::move(line), delay, occurrence};
}
inline moment at(unit_time since_start) {
    return {"", since_start, 1};
}

} // namespace simulator
