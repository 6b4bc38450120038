#pragma once

#include "simulator/unit/event.h"

#include <string>
#include <string_view>

namespace simulator {

// What the kind of an event is called where people read it: "prints", "runs", "desk".
std::string_view label_of(event_kind kind);

// The line of an event as the unit knows it (see `event::line`), from what people call it:
// "runs sync" is "shell sync". Other texts stay as they are.
std::string line_of_labelled(std::string_view text);

} // namespace simulator
