#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

// Files of the unit's root in which the tests run.
inline void put_file(const std::filesystem::path &path, std::string_view content) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

inline std::string get_file(const std::filesystem::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// How many descriptors this process holds.
inline size_t open_descriptors() {
    const std::filesystem::directory_iterator listing("/proc/self/fd");
    return static_cast<size_t>(std::distance(begin(listing), end(listing)));
}
