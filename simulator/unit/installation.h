#pragma once

#include "simulator/unit/description.h"

namespace simulator {

// Copies the program under observation, the boundary and the stand-ins into the tree at `root`.
// `program` is a path on the desk; empty for the updater.
void install_simulator(const std::filesystem::path &root, const std::filesystem::path &program);

// The program's command line and environment, with paths of the unit.
std::vector<std::string> command_of(const std::vector<std::string> &arguments);
std::vector<std::string> environment_of(const unit_plan &plan);

} // namespace simulator
