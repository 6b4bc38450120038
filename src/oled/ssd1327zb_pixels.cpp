#include "oled/ssd1327zb_pixels.h"

#include <cstring>

namespace renewer {

namespace {

// Lays two pixels over the byte that holds them.
template <bool transparent>
uint8_t lay_over(uint8_t below, uint8_t pixels, uint8_t inversion) {
    if constexpr (!transparent) {
        return static_cast<uint8_t>(pixels ^ inversion);
    }
    // Bit 0 of each half becomes 1 when any of its four bits is; times 15 it covers the half.
    const int has_ink = (pixels | pixels >> 1 | pixels >> 2 | pixels >> 3) & 0x11;
    const int kept = ~(has_ink * 15);
    return static_cast<uint8_t>((below & kept) | ((pixels ^ inversion) & ~kept));
}

// Draws a single pixel into the half of the byte that `mask` selects.
template <bool transparent>
void draw_single(uint8_t &byte, int level, int mask, uint8_t inversion) {
    const auto pixels = static_cast<uint8_t>((level & 0x0F) * 0x11);
    const uint8_t drawn = lay_over<transparent>(byte, pixels, inversion);
    byte = static_cast<uint8_t>((byte & ~mask) | (drawn & mask));
}

template <bool transparent>
void draw(uint8_t *to, bool from_high, const uint8_t *levels, int32_t count, uint8_t inversion) {
    // A pixel with an odd index is in the high half of its byte.
    if (from_high && count > 0) {
        draw_single<transparent>(*to++, *levels++, 0xF0, inversion);
        --count;
    }
    const int32_t pairs = count / 2;
    for (int32_t i = 0; i < pairs; ++i) {
        const int pixels = (levels[2 * i] & 0x0F) | levels[2 * i + 1] << 4;
        to[i] = lay_over<transparent>(to[i], static_cast<uint8_t>(pixels), inversion);
    }
    if (count % 2 > 0) {
        draw_single<transparent>(to[pairs], levels[count - 1], 0x0F, inversion);
    }
}

} // namespace

void ssd1327zb_fill_level(uint8_t *buf, int32_t first, int32_t count, uint8_t level) {
    if (first % 2 != 0 && count > 0) {
        set_canavs_1Dlocation_value(buf, first++, level);
        --count;
    }
    if (count % 2 > 0) {
        set_canavs_1Dlocation_value(buf, first + --count, level);
    }
    if (count > 0) {
        memset(buf + first / 2, (level & 0x0F) * 0x11, static_cast<size_t>(count / 2));
    }
}

void ssd1327zb_draw_levels(uint8_t *buf, int32_t first, const uint8_t *levels, int32_t count,
                           uint32_t flags) {
    const uint8_t inversion = (flags & ssd1327zb_draw_inverted) != 0 ? 0xFF : 0;
    const auto draw_all = (flags & ssd1327zb_draw_transparent) != 0 ? draw<true> : draw<false>;
    draw_all(buf + first / 2, first % 2 != 0, levels, count, inversion);
}

} // namespace renewer
