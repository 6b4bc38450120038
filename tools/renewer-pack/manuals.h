#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

// What is derived from the description of the commands.
namespace pack {

// Prints the completion for bash, zsh or fish. Throws `misused` for another shell.
int print_completion(const CLI::App &app, const std::string &shell);

// Prints the manual page (man(7)) of the program, or of a command when it is named. Throws
// `misused` for a command that there is not.
int print_manual(const CLI::App &app, const std::string &command);

} // namespace pack
