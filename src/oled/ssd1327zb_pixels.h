#pragma once

#include <cstdint>

// How grey levels get into the bytes of a `canvas`, for the modules that draw. There are no bounds
// checks here.
namespace renewer {

// Options for drawing levels, to be combined with |.
enum ssd1327zb_draw_flag : uint32_t {
    ssd1327zb_draw_inverted = 1,    // a level v is drawn as 15 - v
    ssd1327zb_draw_transparent = 2, // where the level is 0 the canvas stays as it is
};

// Sets pixel number `n` to the low 4 bits of `level`; the other pixel of its byte stays.
inline void set_canavs_1Dlocation_value(uint8_t *buf, int32_t n, uint8_t level) {
    uint8_t &byte = buf[n / 2];
    byte = n % 2 != 0 ? static_cast<uint8_t>((byte & 0x0F) | level << 4)
                      : static_cast<uint8_t>((byte & 0xF0) | (level & 0x0F));
}

// Sets `count` pixels from number `first` on to the low 4 bits of `level`.
void ssd1327zb_fill_level(uint8_t *buf, int32_t first, int32_t count, uint8_t level);

// Draws `count` levels, one byte each, into the pixels from number `first` on. Transparency is
// decided before the inversion. Only the low 4 bits of a level count.
void ssd1327zb_draw_levels(uint8_t *buf, int32_t first, const uint8_t *levels, int32_t count,
                           uint32_t flags);

} // namespace renewer
