#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// Output that is derived from the description of the commands.
namespace pack {

// Prints the completion for bash, zsh or fish. Throws `usage_error` for another shell.
int print_completion(const CLI::App &app, const std::string &shell);

// Prints the manual page (man(7)) of the program, or of the command if one is named. Throws
// `usage_error` if there is no such command.
int print_manual(const CLI::App &app, const std::string &command);

} // namespace pack
