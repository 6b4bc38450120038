#pragma once

#include <cstdint>

// The frame of the grey OLED in memory: 128 x 128 pixels of 4 bits, in exactly the bytes that the
// panel takes.
//
// Pixel (x, y) has the number n = y * 128 + x and lies in byte n / 2, an even n in the low 4 bits
// and an odd n in the high 4 bits. Its value is a grey level from 0 (dark) to 15 (brightest).
namespace renewer {

constexpr uint16_t ssd1327zb_width = 128;
constexpr uint16_t ssd1327zb_height = 128;
constexpr uint16_t ssd1327zb_bits_per_pixel = 4;
constexpr uint32_t ssd1327zb_frame_size =
    uint32_t{ssd1327zb_width} * ssd1327zb_height * ssd1327zb_bits_per_pixel / 8;
static_assert(ssd1327zb_frame_size == 8192);

struct canvas {
    uint16_t width;  // pixels per row
    uint16_t height; // rows
    uint16_t bpp;    // bits per pixel
    uint8_t *buf;    // the pixels, owned by the canvas
    uint32_t size;   // bytes in `buf`
};

// A rectangle on the canvas.
struct box {
    int16_t x; // left column
    int16_t y; // top row
    uint16_t width;
    uint16_t height;
};

// Makes a dark canvas of 128 x 128 pixels, which the caller releases with
// `ssd1327zb_destroy_canvas`.
//
// Returns null without memory, after "create canvas struct failed" or "create canvas addr failed".
canvas *ssd1327zb_create_canvas();

// Makes every pixel dark. The panel does not change until the next flush.
//
// Returns 0, or -1 without a canvas or its pixels.
int ssd1327zb_clean_canvas(canvas *frame);

// Checks whether a box lies on the 128 x 128 pixels of the panel; an empty one may.
//
// Returns 0 when it does, -1 when it does not or there is none.
int ssd1327zb_check_box(const box *area);

// Whether there is a canvas with pixels. Their number is not checked.
bool ssd1327zb_has_pixels(const canvas *frame);

// Frees the canvas at `*frame`, pixels and all, and makes the pointer null; nothing when either is
// null already.
void ssd1327zb_destroy_canvas(canvas **frame);

} // namespace renewer
