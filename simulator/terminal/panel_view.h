#pragma once

#include "simulator/panels/picture.h"
#include "simulator/unit/event.h"

#include <string>

namespace simulator {

// Where something is drawn.
struct drawing_room {
    int columns = 80;
    int rows = 24;
    bool colours = true;
};

// The part of a unit that its user looks at.
class panel_view {
public:
    virtual ~panel_view() = default;

    // Take what happened. Return whether the user sees a change.
    virtual bool take(const event &happened) = 0;
    virtual bool take(const picture &) { return false; }

    // Where nothing can be drawn: the line (with its end) that tells what the user sees when this
    // happens, or at the end of the run, if that has not been told before; else empty.
    virtual std::string told(const event &happened) = 0;

    // What the user sees, in lines.
    virtual std::string drawn(const drawing_room &room) const = 0;
};

// The key that the user holds, for the panels' drawings.
class held_key {
public:
    // Returns whether another key is held now.
    bool take(const event &happened);
    const std::string &name() const { return held; } // empty for none

private:
    std::string held;
};

} // namespace simulator
