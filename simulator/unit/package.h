#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// Update packages for simulated units, made and unpacked with renewer-pack.
namespace simulator {

// Makes a package for a unit with this part number from an install script and the updater itself.
// Throws std::runtime_error on failure.
void make_package(const std::filesystem::path &file, std::string_view pn,
                  std::string_view install_script);

// Does in the unit's tree at `root` what its main application does with a package before it starts
// the updater: unpacks it into "/firmware/update" and, if `with_header` (for packages of the new
// layout), writes its header to "/data/app/log/pack_tmp". Throws std::runtime_error if the package
// fails its check.
void take_package(const std::filesystem::path &file, const std::filesystem::path &root,
                  bool with_header = true);

struct pack_result {
    int status; // the tool's exit status
    std::string output;
};

// Runs renewer-pack with these arguments. Throws std::runtime_error if it cannot be started.
pack_result run_pack(const std::vector<std::string> &arguments);

} // namespace simulator
