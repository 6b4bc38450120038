#include "input.h"

#include "oled/ssd1327zb_draw_bmp.h"

#include <algorithm>
#include <memory>
#include <vector>

using namespace renewer;

namespace {

struct picture_deleter {
    void operator()(bmpbuf *picture) const { ssd1327zb_destory_bmpbuf(&picture); }
};

} // namespace

// The grey OLED's pictures, from any file to the canvas. Every level there is must be one that the
// panel has.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size));
    const std::unique_ptr<bmpbuf, picture_deleter> picture(
        ssd1327zb_bmp_to_bmpbuf(fuzz::input_path));
    if (picture == nullptr) {
        return 0;
    }
    const size_t count = size_t{picture->width} * picture->height;
    fuzz::expect(count > 0 && std::all_of(picture->buf, picture->buf + count,
                                          [](uint8_t level) { return level <= 15; }));
    std::vector<uint8_t> frame_pixels(ssd1327zb_frame_size);
    canvas frame = {ssd1327zb_width, ssd1327zb_height, ssd1327zb_bits_per_pixel,
                    frame_pixels.data(), ssd1327zb_frame_size};
    const box whole = {0, 0, picture->width, picture->height};
    const box corner = {120, 120, 8, 8};
    ssd1327zb_draw_bmpbuf_on_canvas(picture.get(), &frame, &whole, 0);
    ssd1327zb_draw_bmpbuf_on_canvas(picture.get(), &frame, &corner, 1);
    return 0;
}
