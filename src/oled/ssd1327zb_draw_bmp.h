#pragma once

#include "oled/ssd1327zb_canvas.h"

namespace renewer {

// A picture as the OLED shows it, loaded once and drawn as often as wanted.
struct bmpbuf {
    uint16_t width;  // pixels per row
    uint16_t height; // rows
    uint8_t *buf;    // a grey level from 0 to 15 per byte, row after row from the top, owned
};

// Loads an uncompressed 24-bit BMP file whose rows are stored from the bottom up, directly after
// the two headers (54 bytes). A pixel's level is floor((blue + green + red) / 48).
//
// Prints "open <path> failed", or the path as a line when the file could be opened, and nothing
// else. Returns null for a file that cannot be opened, is no such file, is empty or larger than
// 65535 pixels either way, ends before its pixels do (the padding of the last row may be missing),
// and without memory. The caller releases the result with `ssd1327zb_destory_bmpbuf`.
bmpbuf *ssd1327zb_bmp_to_bmpbuf(const char *path);

// Draws the picture into a box of its own size, every pixel of it; the flag 1 inverts it (a level v
// is drawn as 15 - v), other flags do nothing. The box's width is taken for the picture's.
//
// Returns 0; -1 with nothing drawn without a picture, a box or the pixels of a canvas, which are
// taken for 128 x 128 whatever its size says; for a box that does not lie on them, and for one that
// is wider or higher than the picture.
int ssd1327zb_draw_bmpbuf_on_canvas(const bmpbuf *picture, canvas *frame, const box *area,
                                    uint32_t flags);

// Frees the picture at `*picture`, pixels and all, and makes the pointer null; nothing when either
// is null already.
void ssd1327zb_destory_bmpbuf(bmpbuf **picture);

} // namespace renewer
