#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

// Drawing for small screens: shapes and text with soft edges on a picture of 24 bits.
namespace pictures {

struct colour {
    uint8_t red, green, blue;
};

struct canvas {
    int width, height;
    std::vector<colour> pixels; // row after row from the top

    canvas(int width, int height, colour background);
    colour at(int x, int y) const;
    // Lays `paint` over a pixel; `coverage` from 0 (nothing) to 1 (all of it).
    void blend(int x, int y, colour paint, double coverage);
};

struct point {
    double x, y;
};

// A stroke with round ends; a disc when both ends are one point.
void draw_line(canvas &on, point from, point to, double thickness, colour paint);

// A filled rectangle with round corners.
void draw_box(canvas &on, point corner, double width, double height, double radius, colour paint);

// A ring of dots of which `step` of `steps` is the brightest and those before it fade.
void draw_spinner(canvas &on, point centre, double radius, double dot, colour paint, int step,
                  int steps);

// Where a text's ink lies relative to its point: 0 starts there, 0.5 is centred, 1 ends there.
struct anchor {
    double x, y;
};

// Writes a line of text of `size` pixels an em with the font in the file `font`.
//
// Throws std::runtime_error when the font cannot be read, lacks a character, or when some of the
// ink would lie outside.
void draw_text(canvas &on, const std::filesystem::path &font, double size, point place,
               anchor anchored, colour paint, const std::string &text);

} // namespace pictures
