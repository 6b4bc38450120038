#pragma once

#include "simulator/unit/unit.h"

// A unit of model 13 whose run needs no user: with a path below "/firmware" it asks no question,
// and the end is acknowledged at once.
inline simulator::unit usual_unit() {
    simulator::unit it;
    it.model("13").acknowledge_end(std::chrono::milliseconds(200)).clock_speed(100);
    return it;
}
