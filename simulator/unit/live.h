#pragma once

#include "simulator/unit/description.h"
#include "simulator/unit/supplies.h"
#include "simulator/unit/unit.h"

#include <mutex>

namespace simulator {

// A hand on a running unit. What it does, from any thread, happens within some milliseconds of the
// desk's and is an event of the time line ("act press ok"). Key events carry as their time 1000 s
// and the time of the run. One run has one hand (`unit::in_hand`).
class live_hand {
public:
    void press(key which); // held until it is released
    void release(key which);
    void supply(const supply_file &changed); // see supplies.h
    void acknowledge_end();                  // removes the end marker
    void cut_power();                        // ends the run, see `unit::cut_power`

    // Takes what was asked for since the last call.
    std::vector<struct happening> take();

private:
    void ask(happening &&wanted);

    std::mutex guard;
    std::vector<happening> asked;
};

} // namespace simulator
