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
    std::string came_to; // how far it got: "running the install script"
    std::string look_at; // what to look at; may be empty

    std::string line() const; // "FAILED (script status 3, twice)"
};

// The verdict on a run on the desk.
verdict verdict_of(const outcome &end);

// The verdict on a run in the field. A log that stops in the middle means that the run was cut.
verdict verdict_of(const run_reading &run);

// Reads the time line of a run on the desk.
run_reading reading_of(const outcome &end);

// The verdict for a damaged package, for which the application does not start the updater.
verdict refused_package(const std::string &why);

} // namespace simulator
