#include "input.h"

#include "oled/ssd1327zb_draw_text.h"

#include <cstring>
#include <string>
#include <vector>

using namespace renewer;

namespace {

// Where and how the strip is drawn: the first bytes of an input.
struct placement {
    int16_t x;
    int16_t y;
    uint16_t width;
    uint16_t height;
    int16_t start;
    uint16_t flags;
};

} // namespace

// Texts from any bytes to the canvas, with a strip of exactly the requested size.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    placement where = {};
    if (size < sizeof(where)) {
        return -1;
    }
    memcpy(&where, data, sizeof(where));
    const std::string text(fuzz::text_of(data + sizeof(where), size - sizeof(where)));
    const int32_t wanted = ssd1327zb_get_strbuf_size(text.c_str());
    if (wanted <= 0) {
        return 0;
    }
    std::vector<uint8_t> pixels(static_cast<size_t>(wanted));
    strbuf strip = {0, 16, pixels.data(), static_cast<uint32_t>(wanted)};
    fuzz::expect(ssd1327zb_str_to_strbuf(text.c_str(), &strip) == &strip);
    fuzz::expect(uint32_t{strip.width} * strip.height == strip.size);
    std::vector<uint8_t> frame_pixels(ssd1327zb_frame_size);
    canvas frame = {ssd1327zb_width, ssd1327zb_height, ssd1327zb_bits_per_pixel,
                    frame_pixels.data(), ssd1327zb_frame_size};
    const box area = {where.x, where.y, where.width, where.height};
    ssd1327zb_draw_strbuf_on_canvas(&strip, where.start, &frame, &area, where.flags);
    return 0;
}
