#pragma once

#include "oled/canvas.h"

#include <cstdint>
#include <vector>

// A receiver's status screen on the OLED, drawn with the display middleware only.
namespace oled_status {

// A text that is rendered once and may be drawn many times.
class text_strip {
public:
    explicit text_strip(const char *text);

    // False if the text contains something that cannot be rendered.
    bool is_rendered() const { return rendered; }
    int32_t width() const { return strip.width; }

    bool draw(const renewer::box &area, uint32_t flags = 0, int32_t start = 0) const;

private:
    std::vector<uint8_t> pixels;
    renewer::strbuf strip{};
    bool rendered = false;
};

// Draws the whole screen on the canvas: a border, a 32 x 32 picture of the battery, satellites and
// fix, the position, an inverted selection, and the part from column `scroll` of a line that is
// longer than the screen.
//
// Returns false if a part of it cannot be drawn.
bool compose(const renewer::bmpbuf &battery, const text_strip &news, int32_t scroll);

} // namespace oled_status
