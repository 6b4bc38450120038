#pragma once

#include <filesystem>

namespace simulator {

enum class ending { reboot, power_off };

// Plays a story in the unit whose first process this is, and writes what happened to `results`:
// "time_line", and each picture that the screen showed as "picture_<n>.ppm".
//
// A story has one entry per line, with tabs between the parts:
//
//     start  <command line>                        the program under observation
//     after  <milliseconds> <line> <action>        `line`: part of a line of the time line
//
// with the actions "press <code>" and "remove <path>". Each is performed once, that long after the
// first matching line. The story ends when the unit requests a reboot or the program ends.
ending play_story(const std::filesystem::path &story, const std::filesystem::path &results);

} // namespace simulator
