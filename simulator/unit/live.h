#pragma once

#include "simulator/unit/description.h"
#include "simulator/unit/supplies.h"
#include "simulator/unit/unit.h"

#include <mutex>

namespace simulator {

// Acts on a running unit on behalf of a person. Its operations may be called from any thread; they
// take effect within some milliseconds of the desk's clock and appear on the time line ("act press
// ok"). Key events are stamped with 1000 s plus the time since the start of the run. One run has
// one hand (`unit::in_hand`).
class live_hand {
public:
    void press(key which); // held until it is released
    void release(key which);
    void supply(const supply_file &changed); // see supplies.h
    void acknowledge_end();                  // removes the end marker
    void cut_power();                        // ends the run, see `unit::cut_power`

    // Returns what was requested since the last call.
    std::vector<struct planned_action> take();

private:
    void ask(planned_action &&wanted);

    std::mutex guard;
    std::vector<planned_action> asked;
};

} // namespace simulator
