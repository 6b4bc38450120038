#pragma once

#include "oled/ssd1327zb_canvas.h"

// Texts of ASCII characters (8 pixels wide) and CJK ideographs (16 pixels wide): rendered once into
// a strip, of which any part can then be drawn on the canvas.
//
// A byte from 1 to 127 of a text is a character. A byte of 0x80 or more starts a sequence of three
// whose value (first byte highest) lies from 0xE4B880 to 0xE9BEA5, the UTF-8 forms of U+4E00 and
// U+9FA5; anything else, a sequence cut short by the text's end among it, is no character.
namespace renewer {

// A rendered text, one byte per pixel: 15 for ink, 0 for background. Record and pixels belong to
// the caller.
struct strbuf {
    uint16_t width;  // pixels per row; set by the rendering
    uint16_t height; // rows; set by the caller, 16 for a text
    uint8_t *buf;    // row after row
    uint32_t size;   // bytes in `buf`
};

// Returns the number of bytes that the strip of a text needs at a height of 16.
//
// Returns -1 without a text, for one whose strip would have more than `INT32_MAX` bytes, and, after
// "this is neither Ascii nor chinese character!", for one that contains anything but characters.
int32_t ssd1327zb_get_strbuf_size(const char *text);

// Renders a text from the left end of a strip whose `height`, `buf` and `size` the caller has set,
// and sets the strip's width to `size` / `height`. What the text does not cover stays as it was.
//
// Returns the strip. Returns null without a text, a strip or its pixels; for a height below 16; for
// a size that is no multiple of it or results in more than 65535 columns; with nothing rendered for
// a strip that the text does not fit into; and, after "this is neither Ascii nor chinese
// character!", for a text that contains anything but characters, of which those before it are
// rendered.
strbuf *ssd1327zb_str_to_strbuf(const char *text, strbuf *strip);

// Draws the strip, from its column `start` on, into a box from its left end: as many columns as the
// strip has left or the box has room for. The flag 1 inverts (a level v is drawn as 15 - v), the
// flag 2 leaves the canvas as it is where the strip's level is 0; both may be given.
//
// The canvas may be narrower or shorter than the panel: its own width is that of its rows.
//
// Returns 0, also when nothing was left to draw. Returns -1 with nothing drawn without a strip,
// pixels, canvas or box; for a strip or box of another height than 16; for a strip of fewer bytes
// than it has pixels; for a negative start; for a box that does not lie on the panel; and when
// there would be pixels beyond the canvas's `size`.
int ssd1327zb_draw_strbuf_on_canvas(const strbuf *strip, int32_t start, canvas *frame,
                                    const box *area, uint32_t flags);

// Renders one cell of 8 x 16 or 16 x 16 pixels, background too, at a column of a strip with `width`
// pixels per row; the cell must lie in the strip. `code` is that of an ASCII character, `value` the
// three bytes of an ideograph, which is drawn as a cross when there is no glyph for it.
void ascii_to_strbuf(int32_t column, int32_t width, uint8_t code, uint8_t *buf);
void chinese_to_strbuf(int32_t column, int32_t width, uint32_t value, uint8_t *buf);

} // namespace renewer
