#pragma once

#include <cstdint>

// Pictures in memory for the colour LCD.
namespace renewer {

// The drawing surface, in pixels. The panel is mounted upright: its columns are the surface's rows.
constexpr int32_t sa1230_surface_width = 294;
constexpr int32_t sa1230_surface_height = 126;

constexpr int32_t sa1230_pixel_size = 2;
constexpr int32_t sa1230_frame_size =
    sa1230_surface_width * sa1230_surface_height * sa1230_pixel_size;

// A rectangle of pixels: row after row from the top, left to right, without padding. A pixel has
// two bytes (RGB565), the high one first. The pixels belong to whoever allocated them.
struct sa1230_layer {
    uint8_t *data;
    int32_t x; // left edge, in the coordinates of the surface that the layer is drawn on
    int32_t y; // top edge
    int32_t width;
    int32_t height;
};

// Rotates `source` by 90 degrees counter-clockwise into `destination`, whose buffer holds at least
// as many pixels: the rightmost column becomes the top row. Sets the destination's width and
// height, not its place. A pixel has `bytes_per_pixel` bytes (1 to 4), all of which are copied.
//
// Returns 0, or -1 when a layer or its pixels are missing or the pixel size is out of range.
int32_t change_layer_direction(const sa1230_layer *source, sa1230_layer *destination,
                               uint8_t bytes_per_pixel);

// Draws `element` into `layer`, both placed in the same coordinates: the bits of its pixels are
// ORed into those that are there, which is a plain copy on black.
//
// Returns 0, or -1, with nothing drawn, when a layer or its pixels are missing or the element does
// not lie wholly inside.
int32_t add_element_to_layer(const sa1230_layer *layer, const sa1230_layer *element);

} // namespace renewer
