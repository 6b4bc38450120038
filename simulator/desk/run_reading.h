#pragma once

#include "simulator/desk/ending.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

// What the lines of a run tell, whoever caught them: the desk, or the application of a unit in the
// field, whose log may be cut and may have other lines between.
struct run_reading {
    bool seen = false; // whether any line was the updater's
    stage reached = stage::started;
    std::optional<ending> stated; // an ending that a line states
    std::string reason;           // of the stated ending, where a line tells more
    std::string charge;           // of the battery, percent as told
    std::string answer;           // what declined, where a key did
    int power_releases = 0;       // at the question
    bool display_failed = false;
    std::string time_limit; // of the script, seconds as told; "-1" for none
    bool overran = false;   // the script was stopped at its limit
    int attempts = 0;       // of the script
    bool script_runs = false;
    std::vector<int> statuses;     // of the script's attempts that ended by themselves
    bool versions_awaited = false; // the versions are to be compared and were not told yet
    bool flagged = false;          // "/tmp/update_flag" was made: an install attempt is over
};

// Takes the next line: of the updater's output (standard output and standard error alike), or a
// command line that it ran.
void read_printed(run_reading &run, std::string_view line);
void read_command(run_reading &run, std::string_view line);

} // namespace simulator
