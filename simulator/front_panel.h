#pragma once

#include "simulator/unit.h"

#include <array>

namespace simulator {

// The front panel of a unit with LEDs and the time line of a run, as a person follows them.
class front_panel {
public:
    // On a terminal the panel is drawn below the lines of the time line; elsewhere a line tells
    // each new pattern of the LEDs, but not every turn of two that alternate.
    explicit front_panel(bool terminal) : on_terminal(terminal) {}

    void show(const event &happened);

    // Takes the panel away and leaves the lines.
    void finish();

private:
    void take(const event &happened);
    void tell_settled_pattern(unit_time now);
    std::string pattern(bool coloured) const;
    void erase();
    void draw();

    bool on_terminal;
    std::map<std::string, bool> lit;
    std::string key; // the key that is held
    bool drawn = false;
    unit_time changed{};             // when an LED was last switched
    std::array<std::string, 2> told; // the patterns that were told last
};

// One line of the time line as people read it: "   2.263 s  desk    press ok". Empty for events
// that get no line of their own (LED changes and short waits).
std::string readable_line(const event &happened);

} // namespace simulator
