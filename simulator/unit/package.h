#pragma once

#include <filesystem>
#include <string_view>

// Update packages for units on the desk, made and taken apart with renewer-pack.
namespace simulator {

// Makes a package for a unit with this part number from an install script and the updater itself.
// Throws std::runtime_error when it cannot be made.
void make_package(const std::filesystem::path &file, std::string_view pn,
                  std::string_view install_script);

// Does in the unit's tree below `root` what its main application does with a package of the new
// layout before it starts the updater: unpacks it into "/firmware/update", and leaves its header in
// "/data/app/log/pack_tmp". Throws std::runtime_error for a package that fails its check.
void take_package(const std::filesystem::path &file, const std::filesystem::path &root);

} // namespace simulator
