#include "oled/ssd1327zb_canvas.h"

#include "platform/owner.h"

#include <cstdio>
#include <cstring>

namespace renewer {

canvas *ssd1327zb_create_canvas() {
    owned_memory<canvas> frame(static_cast<canvas *>(malloc(sizeof(canvas))));
    if (frame == nullptr) {
        puts("create canvas struct failed");
        return nullptr;
    }
    auto *const pixels = static_cast<uint8_t *>(malloc(ssd1327zb_frame_size));
    if (pixels == nullptr) {
        puts("create canvas addr failed");
        return nullptr;
    }
    *frame = {ssd1327zb_width, ssd1327zb_height, ssd1327zb_bits_per_pixel, pixels,
              ssd1327zb_frame_size};
    ssd1327zb_clean_canvas(frame.get());
    return frame.release();
}

int ssd1327zb_clean_canvas(canvas *frame) {
    if (!ssd1327zb_has_pixels(frame)) {
        return -1;
    }
    memset(frame->buf, 0, frame->size);
    return 0;
}

int ssd1327zb_check_box(const box *area) {
    const bool inside = area != nullptr && area->x >= 0 && area->y >= 0 &&
                        area->x + area->width <= ssd1327zb_width &&
                        area->y + area->height <= ssd1327zb_height;
    return inside ? 0 : -1;
}

bool ssd1327zb_has_pixels(const canvas *frame) {
    return frame != nullptr && frame->buf != nullptr;
}

void ssd1327zb_destroy_canvas(canvas **frame) {
    if (frame == nullptr || *frame == nullptr) {
        return;
    }
    free((*frame)->buf);
    (*frame)->buf = nullptr;
    free(*frame);
    *frame = nullptr;
}

} // namespace renewer
