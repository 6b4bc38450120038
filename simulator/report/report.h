#pragma once

#include "simulator/report/story.h"

#include <nlohmann/json.hpp>

namespace simulator {

// The story as data: verdict, unit, package and, for each run, its time line (seconds of the unit's
// clock), LEDs, pictures (PNG, base64), the script's log, the files that changed and the program's
// peak memory.
nlohmann::ordered_json data_of(const run_story &story);

// The same as one self-contained HTML page, from page.html.
std::string report_of(const nlohmann::ordered_json &data);

// The text made safe for a terminal or a page: bytes that are not UTF-8, and control characters
// other than newlines and tabs, are replaced.
std::string printable_lines(const std::string &text);

} // namespace simulator
