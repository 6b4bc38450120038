#pragma once

#include "simulator/unit/description.h"

namespace simulator {

// Puts the program under observation, the boundary and the stand-ins into the tree at `root`.
// `program` is a path of the desk; empty for the updater.
void install_simulator(const std::filesystem::path &root, const std::filesystem::path &program);

// The command line and the environment of the program, as the unit sees them.
std::vector<std::string> command_of(const std::vector<std::string> &arguments);
std::vector<std::string> environment_of(const unit_plan &plan);

} // namespace simulator
