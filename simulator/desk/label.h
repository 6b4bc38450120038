#pragma once

#include "simulator/unit/event.h"

#include <string>
#include <string_view>

namespace simulator {

// The name that people see for a kind of event: "prints", "runs", "desk".
std::string_view label_of(event_kind kind);

// Converts a line with a label into the event's line (see `event::line`): "runs sync" becomes
// "shell sync". Other texts are returned unchanged.
std::string line_of_labelled(std::string_view text);

} // namespace simulator
