#pragma once

#include "simulator/unit/unit.h"

namespace simulator {

// The part of a unit that its user looks at.
class panel_view {
public:
    virtual ~panel_view() = default;

    // Take what happened. Return whether the user sees a change.
    virtual bool take(const event &happened) = 0;
    virtual bool take(const picture &) { return false; }

    // Where nothing can be drawn: the line (with its end) that tells what the user sees by now, if
    // that has not been told before; else empty.
    virtual std::string told(unit_time now) = 0;

    // What the user sees, drawn in lines for a terminal of this size.
    virtual std::string drawn(int columns, int rows) const = 0;
};

// The key that the user holds, for the panels' drawings.
class held_key {
public:
    // Returns whether another key is held now.
    bool take(const event &happened);
    const std::string &name() const { return held; } // "none" for none

private:
    std::string held = "none";
};

// A run as a person follows it: the time line and, on a terminal, the panel below it.
class front_panel {
public:
    // `shown_panel` stands for as long as this.
    front_panel(panel_view &shown_panel, bool terminal)
        : panel(shown_panel), on_terminal(terminal) {}

    void show(const event &happened);
    void show(const picture &seen);

    // Takes the panel away and leaves the lines.
    void finish();

private:
    std::string newly_told(unit_time now) { return on_terminal ? std::string() : panel.told(now); }
    void print(std::string lines, bool with_panel);

    panel_view &panel;
    bool on_terminal;
    unit_time last_event{};
    long drawn_lines = 0; // of the panel, above the cursor
};

} // namespace simulator
