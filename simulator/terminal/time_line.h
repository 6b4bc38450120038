#pragma once

#include "simulator/unit/event.h"

namespace simulator {

// How a line of the time line begins: "   2.263 s  desk    ".
std::string line_begin(unit_time at, std::string_view label);

// An event as a line of the time line: "   2.263 s  desk    press ok". Empty for events without a
// line of their own (LED changes, pictures, transfers and short waits).
std::string readable_line(const event &happened);

} // namespace simulator
