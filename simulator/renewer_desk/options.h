#pragma once

#include "simulator/renewer_desk/commands.h"

#include <CLI/CLI.hpp>

namespace simulator {

// Adds the options that describe the unit to a command. `options` must outlive the command.
void add_unit_options(CLI::App &command, run_options &options);

// Adds the option for the speed of the unit's clock.
void add_speed(CLI::App &command, run_options &options);

// Adds the options of help/options.txt to a command. `options` must outlive the command.
void add_run_options(CLI::App &command, run_options &options);

} // namespace simulator
