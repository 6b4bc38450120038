#include "pictures.h"
#include "svg.h"

#include "lcd/sa1230_layer.h"

#include <array>
#include <numeric>
#include <stdexcept>

namespace document_pictures {

using namespace renewer;

namespace {

// A small surface represents the real one: each pixel has its number instead of a colour.
constexpr int32_t width = 7, height = 3;
using pixels = std::array<uint8_t, static_cast<size_t>(width *height) * sa1230_pixel_size>;

constexpr double cell = 34;

// Two alternating colours for each row of the surface.
constexpr const char *row_colours[height][2] = {
    {"#7fb8e6", "#4b95d1"}, {"#f3c969", "#e0a92f"}, {"#8fcf9f", "#55ad6b"}};

void draw_layer(svg &on, double left, double top, const sa1230_layer &layer) {
    for (int32_t y = 0; y < layer.height; ++y) {
        for (int32_t x = 0; x < layer.width; ++x) {
            const int number = layer.data[(y * layer.width + x) * sa1230_pixel_size];
            const char *colour = row_colours[number / width][number % width % 2];
            on.box(left + x * cell, top + y * cell, cell - 1, cell - 1, colour);
            on.words(left + (x + 0.5) * cell, top + (y + 0.6) * cell, std::to_string(number + 1),
                     "middle");
        }
    }
}

} // namespace

std::string draw_rotation() {
    pixels drawn{}, sent{};
    for (size_t i = 0; i < drawn.size(); ++i) {
        drawn[i] = static_cast<uint8_t>(i / sa1230_pixel_size);
    }
    const sa1230_layer surface = {drawn.data(), 0, 0, width, height};
    sa1230_layer panel = {sent.data(), 0, 0, 0, 0};
    if (change_layer_direction(&surface, &panel, sa1230_pixel_size) != 0) {
        throw std::runtime_error("the surface cannot be rotated");
    }

    svg drawing(590, 305);
    drawing.words(20, 26, "The surface, as it is drawn", "start", true);
    drawing.words(20, 42, "294 x 126 pixels: here 7 x 3");
    draw_layer(drawing, 20, 56, surface);
    drawing.words(20, 180, "The user sees it so, with the panel");
    drawing.words(20, 196, "mounted on its side.");
    drawing.arrow(280, 106, 350, 106);
    drawing.words(315, 98, "rotated", "middle");
    drawing.words(380, 26, "The panel, as it is sent", "start", true);
    drawing.words(380, 42, "126 columns, 294 rows");
    draw_layer(drawing, 380, 56, panel);
    drawing.arrow(565, 72, 486, 72);
    drawing.words(526, 64, "sent first", "middle");
    return drawing.drawn();
}

} // namespace document_pictures
