#pragma once

#include <filesystem>

namespace simulator {

enum class ending { reboot, power_off };

// Plays a story in the unit that this process is the first one of, and writes what happened into
// `results`: "time_line", and each picture that the screen showed as "picture_<n>.ppm".
//
// A story has one entry a line, its parts divided by tabs:
//
//     start  <command line>                        the program under observation
//     after  <milliseconds> <line> <action>        `line`: some part of a line of the time line
//
// with the actions "press <code>" and "remove <path>". Each happens once, that long after the first
// line that fits. The story ends with a reboot that the unit asks for, or when the program ends.
ending play_story(const std::filesystem::path &story, const std::filesystem::path &results);

} // namespace simulator
