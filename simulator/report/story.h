#pragma once

#include "simulator/desk/package_offer.h"
#include "simulator/desk/verdict.h"
#include "simulator/unit/outcome.h"

#include <map>
#include <string>
#include <vector>

namespace simulator {

// The state of a file in the unit's storage.
struct file_state {
    uintmax_t size;
    std::string sha256; // 64 hexadecimal characters; for a link "-> " and its target

    bool operator==(const file_state &) const = default;
};

// The files of the unit's storage and of its /tmp, by their paths on the unit. Digests follow
// FIPS 180-4.
std::map<std::string, file_state> files_of(const std::filesystem::path &tree);

struct recorded_run {
    outcome end;
    std::map<std::string, file_state> before, after;
};

// What was run in a simulated unit, and the result.
struct run_story {
    unit_description described;
    std::optional<package_offer> offer;
    std::vector<std::string> arguments; // of the updater
    double speed = 1;
    std::vector<recorded_run>
        runs; // two after a power cut and another start; none if none was started
    verdict result;
};

} // namespace simulator
