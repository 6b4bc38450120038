#include "oled/ssd1327zb_draw_border.h"

#include "oled/ssd1327zb_pixels.h"

#include <algorithm>
#include <cstdio>

namespace renewer {

namespace {

// A band from top to bottom is narrow as a rule: set pixel by pixel.
void fill_columns(uint8_t *buf, int x, int y, int width, int height, uint8_t level) {
    for (int row = y; row < y + height; ++row) {
        for (int column = x; column < x + width; ++column) {
            set_canavs_1Dlocation_value(buf, row * ssd1327zb_width + column, level);
        }
    }
}

void fill_rows(uint8_t *buf, int x, int y, int width, int height, uint8_t level) {
    for (int row = y; row < y + height; ++row) {
        ssd1327zb_fill_level(buf, row * ssd1327zb_width + x, width, level);
    }
}

} // namespace

int ssd1327zb_draw_border_on_canvas(canvas *frame, const box *area, uint8_t thickness,
                                    uint8_t percentage) {
    if (area == nullptr) {
        return -1;
    }
    const int x = area->x, y = area->y, width = area->width, height = area->height;
    if (width == 0 || height == 0 || ssd1327zb_check_box(area) != 0) {
        printf("(%d,%d,%d,%d) is a invalid box \n", x, y, width, height);
        return -1;
    }
    const int band = std::max<int>(thickness, 1);
    if (band > width / 2 || band > height / 2) {
        printf("thickness %d on box(%d,%d,%d,%d) is not invalid\n", band, x, y, width, height);
        return -1;
    }
    if (!ssd1327zb_has_pixels(frame)) {
        return -1;
    }
    const auto level = static_cast<uint8_t>(std::min<int>(percentage, 100) * 15 / 100);
    fill_rows(frame->buf, x, y, width, band, level);
    fill_rows(frame->buf, x, y + height - band, width, band, level);
    fill_columns(frame->buf, x, y + band, band, height - 2 * band, level);
    fill_columns(frame->buf, x + width - band, y + band, band, height - 2 * band, level);
    return 0;
}

} // namespace renewer
