#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Update packages for units on the desk, made and taken apart with renewer-pack.
namespace simulator {

// Makes a package for a unit with this part number from an install script and the updater itself.
// Throws std::runtime_error when it cannot be made.
void make_package(const std::filesystem::path &file, std::string_view pn,
                  std::string_view install_script);

// Does in the unit's tree below `root` what its main application does with a package before it
// starts the updater: unpacks it into "/firmware/update" and, `with_header`, leaves its header in
// "/data/app/log/pack_tmp", as for packages of the new layout. Throws std::runtime_error for a
// package that fails its check.
void take_package(const std::filesystem::path &file, const std::filesystem::path &root,
                  bool with_header = true);

struct pack_result {
    int status; // the tool's exit status
    std::string output;
};

// Runs renewer-pack with these arguments. Throws std::runtime_error when it cannot be run.
pack_result run_pack(const std::vector<std::string> &arguments);

} // namespace simulator
