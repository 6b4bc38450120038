#pragma once

#include "simulator/panels/picture.h"
#include "simulator/unit/event.h"

#include <string>

namespace simulator {

// The space for a drawing.
struct drawing_room {
    int columns = 80;
    int rows = 24;
    bool colours = true;
};

// The part of a unit that its user sees.
class panel_view {
public:
    virtual ~panel_view() = default;

    // Take an event or a picture. Return whether the user sees a change.
    virtual bool take(const event &happened) = 0;
    virtual bool take(const picture &) { return false; }

    // For output without drawings: a line, with its newline, about what the user sees at this
    // event, if it is something new; else empty.
    virtual std::string line_for(const event &happened) = 0;

    // What the user sees, as lines of text.
    virtual std::string draw(const drawing_room &room) const = 0;
};

// The key that the user holds, for drawings of the panel.
class held_key {
public:
    // Returns whether the held key has changed.
    bool take(const event &happened);
    const std::string &name() const { return held; } // empty for none

private:
    std::string held;
};

} // namespace simulator
