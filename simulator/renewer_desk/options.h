#pragma once

#include "simulator/renewer_desk/commands.h"

#include <CLI/CLI.hpp>

namespace simulator {

// Lets a command take the options that describe the unit. `options` stands for as long as the
// command.
void add_unit_options(CLI::App &command, run_options &options);

// How fast the unit's clock runs.
void add_speed(CLI::App &command, run_options &options);

// Lets a command take the options of help/options.txt. `options` stands for as long as the command.
void add_run_options(CLI::App &command, run_options &options);

} // namespace simulator
