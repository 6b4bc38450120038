#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// What help, completions, manual pages and error messages say about the described commands.
namespace pack {

// The option text that marks options as required unless a manifest has their value, so that CLI11
// must not demand them.
constexpr const char *needed = "REQUIRED";

// The commands that the help lists.
std::vector<std::string> command_names(const CLI::App &app);

// Throws `usage_error` if there is none of this name.
const CLI::App &command_named(const CLI::App &app, const std::string &name);

// What kind of option it is.
bool is_flag(const CLI::Option &option);
bool is_positional(const CLI::Option &option);
bool takes_many(const CLI::Option &option);

// A command's usage, like "renewer-pack show [--json] FILE"; required parts are without brackets.
std::string synopsis(const CLI::App &command);

// Says what is wrong with a command line that could not be parsed, and what may have been meant.
std::string complaint(const CLI::App &app, const CLI::ParseError &error);

} // namespace pack
