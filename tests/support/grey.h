#pragma once

#include "oled/ssd1327zb_canvas.h"

#include <array>
#include <cstdint>
#include <random>

// The OLED's pixels one by one, for comparison with what the drawing operations make of them.

using grey_levels = std::array<uint8_t, 128 * 128>;

// The levels in the bytes of a frame: two pixels a byte, the left one in the low half.
inline grey_levels levels_of(const uint8_t *bytes) {
    grey_levels levels;
    for (size_t i = 0; i < levels.size(); i += 2) {
        levels[i] = bytes[i / 2] % 16;
        levels[i + 1] = bytes[i / 2] / 16;
    }
    return levels;
}

inline std::mt19937 &dice() {
    static std::mt19937 generator(20240327);
    return generator;
}

// A number from `low` to `high`.
inline int thrown(int low, int high) {
    return std::uniform_int_distribution(low, high)(dice());
}

// A box about the size of the panel; about every other one overlaps it.
inline renewer::box thrown_box() {
    const auto place = [] {
        return static_cast<int16_t>(thrown(0, 3) == 0 ? thrown(-9, 140) : thrown(0, 90));
    };
    const auto length = [] {
        return static_cast<uint16_t>(thrown(0, 3) == 0 ? thrown(0, 140) : thrown(0, 40));
    };
    return {place(), place(), length(), length()};
}

inline bool lies_on_panel(const renewer::box &area) {
    return area.x >= 0 && area.y >= 0 && area.x + area.width <= 128 && area.y + area.height <= 128;
}

// A canvas with random content, released with the test.
struct any_canvas {
    renewer::canvas *frame = renewer::ssd1327zb_create_canvas();

    any_canvas() { fill(); }
    any_canvas(const any_canvas &) = delete;
    any_canvas &operator=(const any_canvas &) = delete;
    ~any_canvas() { renewer::ssd1327zb_destroy_canvas(&frame); }

    void fill() {
        for (uint32_t i = 0; i < frame->size; ++i) {
            frame->buf[i] = static_cast<uint8_t>(dice()());
        }
    }
    grey_levels levels() const { return levels_of(frame->buf); }
};
