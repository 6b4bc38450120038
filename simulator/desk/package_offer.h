#pragma once

#include "simulator/desk/unit_description.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace simulator {

// The application would not start the updater for this package; what() says why.
struct package_refused : std::runtime_error {
    using runtime_error::runtime_error;
};

// A package for the unit's main application, and the arguments with which it starts the updater.
struct package_offer {
    std::filesystem::path path;
    bool is_directory = false;          // with the files of an unpacked package
    nlohmann::ordered_json header;      // as renewer-pack prints it; null for a directory
    std::vector<std::string> arguments; // KIND PATH PN
};

// Arguments that replace those the application would choose; empty to keep them.
struct offer_overrides {
    std::string kind, path, meant_for;
};

// Examines a package of either layout, or a directory with the files of one. Throws package_refused
// for a package that fails its check, std::runtime_error if it cannot be read.
package_offer look_at_package(const std::filesystem::path &path, const unit_description &described,
                              const offer_overrides &overrides);

// Puts the package into the unit, as the application does.
void take(unit &it, const package_offer &offer);

} // namespace simulator
