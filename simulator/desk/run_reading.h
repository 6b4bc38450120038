#pragma once

#include "simulator/desk/ending.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

// What the lines of a run say, whether the desk recorded them or the application of a unit in the
// field, whose log may be truncated and may contain other lines.
struct run_reading {
    bool seen = false; // whether any line came from the updater
    stage reached = stage::started;
    std::optional<ending> stated; // the ending that a line states
    std::string reason;           // of the stated ending, if a line says more
    std::string charge;           // of the battery, in percent, as printed
    std::string answer;           // which key declined, if one did
    int power_releases = 0;       // of the power key, at the question
    bool display_failed = false;
    std::string time_limit; // of the script, in seconds, as printed; "-1" for none
    bool overran = false;   // the script was stopped at its limit
    int attempts = 0;       // of the script
    bool script_runs = false;
    std::vector<int> statuses;     // of the attempts that ended by themselves
    bool versions_awaited = false; // the versions are about to be compared
    bool flagged = false;          // "/tmp/update_flag" was made: an install attempt is over
};

// Take the next line of the updater's output (standard output or standard error), or the next
// command that it ran.
void read_printed(run_reading &run, std::string_view line);
void read_command(run_reading &run, std::string_view line);

} // namespace simulator
