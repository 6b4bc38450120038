#pragma once

#include <CLI/CLI.hpp>

#include <functional>

// The commands and their options, described once for the command line, its help, the shell
// completions and the manual pages.
namespace pack {

using chosen_command = std::function<int()>;

// Adds all commands. Parsing a command line sets `chosen`.
void describe_commands(CLI::App &app, chosen_command &chosen);

} // namespace pack
