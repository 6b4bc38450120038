#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace simulator {

// What a panel shows: pixels of red, green and blue, row by row from the top.
struct picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;

    bool operator==(const picture &) const = default;
};

// Returns the picture as a PNG file. Throws std::runtime_error on failure.
std::vector<uint8_t> png_of(const picture &content);

// Writes a PNG file. Throws std::runtime_error on failure.
void write_png(const std::filesystem::path &path, const picture &content);

// Reads a PNG file. Throws std::runtime_error on failure.
picture read_png(const std::filesystem::path &path);

} // namespace simulator
