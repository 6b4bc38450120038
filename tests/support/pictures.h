#pragma once

#include "command.h"
#include "files.h"

#include <cstdint>
#include <random>
#include <string>

// Pictures for the display tests, and what netpbm, another program, makes of them.

// Pixels of red, green and blue at random, row after row from the top.
inline std::string random_pixels(int width, int height) {
    static std::mt19937 generator(20240229);
    std::string pixels(static_cast<size_t>(width * height * 3), '\0');
    for (char &part : pixels) {
        part = static_cast<char>(generator() & 0xFF);
    }
    return pixels;
}

inline std::string ppm_of(int width, int height, const std::string &pixels) {
    return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n" + pixels;
}

// What a program of netpbm makes of `input`.
inline std::string netpbm(const std::string &command, const std::string &input) {
    put_file("/tmp/netpbm.in", input);
    return netpbm("{ " + command + "; } < /tmp/netpbm.in");
}

inline std::string bmp_of(int width, int height, const std::string &pixels) {
    return netpbm("ppmtobmp -quiet -bpp=24", ppm_of(width, height, pixels));
}

// The bytes that the LCD takes for pixels of red, green and blue: the 16-bit number with red above
// green above blue, in big-endian order.
inline std::string rgb565_of(const std::string &pixels) {
    std::string result;
    for (size_t i = 0; i < pixels.size(); i += 3) {
        const auto part = [&](size_t at) { return static_cast<uint8_t>(pixels[i + at]); };
        const int value = part(0) / 8 * 2048 + part(1) / 4 * 32 + part(2) / 8;
        result += {static_cast<char>(value / 256), static_cast<char>(value % 256)};
    }
    return result;
}

// A valid BMP file of 24-bit pixels, to be changed in one field. Each byte of the pixels is its
// offset in the file.
struct bmp {
    uint32_t offset = 54;
    int64_t width = 4;
    int64_t height = 2;
    int bits = 24;
    size_t pixel_bytes = 24;
    const char *signature = "BM";

    std::string bytes() const {
        std::string text(54 + pixel_bytes, '\0');
        const auto put = [&text](size_t at, int64_t value, size_t size) {
            for (size_t i = 0; i < size; ++i) {
                text[at + i] = static_cast<char>(value >> (8 * i) & 0xFF);
            }
        };
        text.replace(0, 2, signature);
        put(10, offset, 4);
        put(14, 40, 4);
        put(18, width, 4);
        put(22, height, 4);
        put(28, bits, 2);
        for (size_t i = 54; i < text.size(); ++i) {
            text[i] = static_cast<char>(i);
        }
        return text;
    }
    std::string first(size_t count) const { return bytes().substr(0, count); }
};
