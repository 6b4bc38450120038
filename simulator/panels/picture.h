#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace simulator {

// What a panel shows to its user: pixels of red, green and blue, row after row from the top.
struct picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;

    bool operator==(const picture &) const = default;
};

// The picture as the bytes of a PNG file. Throws std::runtime_error when that fails.
std::vector<uint8_t> png_of(const picture &content);

// Writes a PNG file. Throws std::runtime_error when that fails.
void write_png(const std::filesystem::path &path, const picture &content);

// Reads a PNG file. Throws std::runtime_error when that fails.
picture read_png(const std::filesystem::path &path);

} // namespace simulator
