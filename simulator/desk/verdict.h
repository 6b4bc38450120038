#pragma once

#include "simulator/desk/run_reading.h"
#include "simulator/unit/outcome.h"

#include <string>

namespace simulator {

// How a run ended, in words.
struct verdict {
    ending which = ending::cut;
    std::string word;    // "FAILED"
    std::string reason;  // "script status 3, twice"; may be empty
    std::string came_to; // how far it came: "running the install script"
    std::string look_at; // what to look at; may be empty

    std::string line() const; // "FAILED (script status 3, twice)"
};

// The verdict on a run of the desk.
verdict verdict_of(const outcome &end);

// The verdict on what was read of a run in the field. A log that stops in the middle is a run that
// was cut.
verdict verdict_of(const run_reading &run);

// What the desk reads of a run's time line.
run_reading reading_of(const outcome &end);

// A verdict without a run: the application does not start the updater for a damaged package.
verdict refused_package(const std::string &why);

} // namespace simulator
