#pragma once

#include "oled/canvas.h"

#include <cstdint>
#include <vector>

// A status screen of a receiver on the OLED, drawn through the display middleware alone.
namespace oled_status {

// A text that is rendered once and drawn as often as wanted.
class text_strip {
public:
    explicit text_strip(const char *text);

    // False when there is something in the text that cannot be rendered.
    bool is_rendered() const { return rendered; }
    int32_t width() const { return strip.width; }

    bool draw(const renewer::box &area, uint32_t flags = 0, int32_t start = 0) const;

private:
    std::vector<uint8_t> pixels;
    renewer::strbuf strip{};
    bool rendered = false;
};

// Draws the whole screen on the canvas: a border, the battery's picture of 32 x 32 pixels, the
// satellites and the fix, the position, an inverted selection, and, from column `scroll` on, a line
// that is longer than the screen.
//
// Returns false when some of it cannot be drawn.
bool compose(const renewer::bmpbuf &battery, const text_strip &news, int32_t scroll);

} // namespace oled_status
