#include "oled/ssd1327zb_draw_text.h"

#include "oled/ssd1327zb_fonts.h"
#include "oled/ssd1327zb_pixels.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace renewer {

namespace {

// U+4E00 and U+9FA5, as the three bytes of their UTF-8.
constexpr uint32_t first_ideograph = 0xE4B880;
constexpr uint32_t last_ideograph = 0xE9BEA5;

constexpr int32_t glyph_height = 16;
constexpr uint64_t ink = 15;

// The first character of a text.
struct character {
    enum { ascii, ideograph, end, invalid } kind;
    uint32_t value;

    int32_t columns() const {
        return static_cast<int32_t>(kind == ascii ? narrow_columns : wide_columns);
    }
    int bytes() const { return kind == ascii ? 1 : 3; }
    bool is_drawn() const { return kind == ascii || kind == ideograph; }
};

character next_character(const char *text) {
    const auto byte = [text](int i) { return static_cast<uint8_t>(text[i]); };
    if (byte(0) < 0x80) {
        return {byte(0) != 0 ? character::ascii : character::end, byte(0)};
    }
    if (byte(1) == 0 || byte(2) == 0) {
        return {character::invalid, 0};
    }
    const uint32_t value = static_cast<uint32_t>(byte(0) << 16 | byte(1) << 8 | byte(2));
    const bool accepted = value >= first_ideograph && value <= last_ideograph;
    return {accepted ? character::ideograph : character::invalid, value};
}

void report_invalid_character() {
    puts("this is neither Ascii nor chinese character!");
}

// Whether all characters up to the text's end, or to an invalid one, fit into `columns`.
bool fits(const char *text, int32_t columns) {
    for (character next = next_character(text); next.is_drawn(); next = next_character(text)) {
        columns -= next.columns();
        if (columns < 0) {
            return false;
        }
        text += next.bytes();
    }
    return true;
}

// Eight pixels of a row at a time: bit `row` of each of eight columns becomes a byte of ink or
// background. A shift moves bits from byte to byte too, but none of those passes the mask.
void render_rows(const uint8_t *columns, uint8_t *to, int32_t width) {
    uint64_t bits;
    // memcpy, since neither side is aligned.
    memcpy(&bits, columns, sizeof(bits));
    for (int row = 0; row < 8; ++row, to += width) {
        const uint64_t pixels = (bits >> row & 0x0101010101010101) * ink;
        memcpy(to, &pixels, sizeof(pixels));
    }
}

template <int32_t columns>
void render_glyph(const uint8_t *glyph, uint8_t *to, int32_t width) {
    for (int32_t column = 0; column < columns; column += 8) {
        render_rows(glyph + column, to + column, width);
        render_rows(glyph + columns + column, to + 8 * width + column, width);
    }
}

const uint8_t *find_ideograph(uint32_t value) {
    const std::array<uint8_t, 4> code = {static_cast<uint8_t>(value >> 16),
                                         static_cast<uint8_t>(value >> 8),
                                         static_cast<uint8_t>(value), 0};
    for (size_t at = 0; at < ChineseCharac.size(); at += chinese_entry_size) {
        if (memcmp(&ChineseCharac[at + wide_glyph_size], code.data(), code.size()) == 0) {
            return &ChineseCharac[at];
        }
    }
    return ChineseNone.data();
}

// A strip of no bytes, as that of an empty text, needs no buffer.
bool has_pixels(const strbuf &strip) {
    return strip.buf != nullptr || strip.size == 0;
}

bool can_be_drawn(const strbuf &strip) {
    return has_pixels(strip) && strip.height == glyph_height &&
           uint32_t{strip.width} * strip.height <= strip.size;
}

} // namespace

int32_t ssd1327zb_get_strbuf_size(const char *text) {
    if (text == nullptr) {
        return -1;
    }
    int64_t size = 0;
    character next = next_character(text);
    for (; next.is_drawn() && size <= INT32_MAX; next = next_character(text)) {
        size += int64_t{next.columns()} * glyph_height;
        text += next.bytes();
    }
    if (next.kind == character::invalid) {
        report_invalid_character();
        return -1;
    }
    return size <= INT32_MAX ? static_cast<int32_t>(size) : -1;
}

strbuf *ssd1327zb_str_to_strbuf(const char *text, strbuf *strip) {
    if (text == nullptr || strip == nullptr || !has_pixels(*strip) ||
        strip->height < glyph_height || strip->size / strip->height > UINT16_MAX) {
        return nullptr;
    }
    strip->width = static_cast<uint16_t>(strip->size / strip->height);
    if (strip->size % strip->height != 0 || !fits(text, strip->width)) {
        return nullptr;
    }
    int32_t column = 0;
    character next = next_character(text);
    for (; next.is_drawn(); next = next_character(text)) {
        if (next.kind == character::ascii) {
            ascii_to_strbuf(column, strip->width, static_cast<uint8_t>(next.value), strip->buf);
        } else {
            chinese_to_strbuf(column, strip->width, next.value, strip->buf);
        }
        column += next.columns();
        text += next.bytes();
    }
    if (next.kind == character::invalid) {
        report_invalid_character();
        return nullptr;
    }
    return strip;
}

int ssd1327zb_draw_strbuf_on_canvas(const strbuf *strip, int32_t start, canvas *frame,
                                    const box *area, uint32_t flags) {
    if (strip == nullptr || !can_be_drawn(*strip) || start < 0 || !ssd1327zb_has_pixels(frame) ||
        ssd1327zb_check_box(area) != 0 || area->height != glyph_height) {
        return -1;
    }
    const int32_t columns = std::min<int32_t>(strip->width - start, area->width);
    // The box fits the panel, but a caller's canvas may be smaller. Two pixels a byte.
    const int64_t end = int64_t{area->y + glyph_height - 1} * frame->width + area->x + columns;
    if (columns > 0 && end > int64_t{frame->size} * 2) {
        return -1;
    }
    for (int32_t row = 0; row < glyph_height && columns > 0; ++row) {
        ssd1327zb_draw_levels(frame->buf, (area->y + row) * frame->width + area->x,
                              strip->buf + row * strip->width + start, columns, flags);
    }
    return 0;
}

void ascii_to_strbuf(int32_t column, int32_t width, uint8_t code, uint8_t *buf) {
    if (code < ascii_glyphs) {
        render_glyph<narrow_columns>(&AsciiCharac[code * narrow_glyph_size], buf + column, width);
    }
}

void chinese_to_strbuf(int32_t column, int32_t width, uint32_t value, uint8_t *buf) {
    render_glyph<wide_columns>(find_ideograph(value), buf + column, width);
}

} // namespace renewer
