#pragma once

#include "simulator/desk/unit_description.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace simulator {

// The application does not start the updater for this package; what() says why.
struct package_refused : std::runtime_error {
    using runtime_error::runtime_error;
};

// What a unit's main application is offered, and how it starts the updater for it.
struct package_offer {
    std::filesystem::path path;
    bool is_directory = false;          // of the files of a package
    nlohmann::ordered_json header;      // as renewer-pack shows it; null for a directory
    std::vector<std::string> arguments; // KIND PATH PN
};

// What the user of the desk wants otherwise than the application has it; empty texts for nothing.
struct offer_wishes {
    std::string kind, path, meant_for;
};

// Looks at a package of either layout, or at a directory with the files of one. Throws
// package_refused for a package that fails its check, std::runtime_error for what cannot be read.
package_offer look_at_package(const std::filesystem::path &path, const unit_description &described,
                              const offer_wishes &wishes);

// Puts it into the unit, as the application does.
void take(unit &it, const package_offer &offer);

} // namespace simulator
