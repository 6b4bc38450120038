#pragma once

#include "simulator/report/story.h"

#include <nlohmann/json.hpp>

namespace simulator {

// The story as data: verdict, unit, package and, for each run, its time line (seconds of the unit's
// clock), LEDs, pictures (PNG, in base64), the script's log, the files that changed and the peak of
// the program's memory.
nlohmann::ordered_json data_of(const run_story &story);

// The same as one HTML page that needs nothing else, from page.html.
std::string report_of(const nlohmann::ordered_json &data);

// The text for a terminal or a page: bytes that are no UTF-8, and controls other than line ends and
// tabs, replaced.
std::string printable_lines(const std::string &text);

} // namespace simulator
