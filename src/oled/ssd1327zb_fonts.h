#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The glyphs of the OLED's texts, made at build time from an installed bitmap font and the lists in
// ssd1327zb_fonts.txt.
//
// A glyph is a cell of 16 rows. Its first bytes hold rows 0 to 7, one byte per column from the left
// and bit 0 topmost; as many more hold rows 8 to 15.
namespace renewer {

constexpr size_t narrow_columns = 8;
constexpr size_t wide_columns = 16;
constexpr size_t narrow_glyph_size = 2 * narrow_columns;
constexpr size_t wide_glyph_size = 2 * wide_columns;

// A glyph, the character's UTF-8 bytes in their order, and zero bytes up to the entry's size.
constexpr size_t chinese_entry_size = wide_glyph_size + 4;
constexpr size_t russian_entry_size = narrow_glyph_size + 4;

constexpr size_t ascii_glyphs = 160;
constexpr size_t chinese_entries = 266;
constexpr size_t russian_entries = 66;
constexpr size_t turkey_glyphs = 24;

// Glyph n for the character code n: nothing for 0 and from 128 on, small symbols for 1 to 31 and
// 127. One zero byte follows.
extern const std::array<uint8_t, ascii_glyphs * narrow_glyph_size + 1> AsciiCharac;

// The ideographs of a receiver's menus and status screens; then entries that no text finds: a blank
// with the code 20 00 00, the degree-Celsius sign and the Cyrillic letters.
extern const std::array<uint8_t, chinese_entries * chinese_entry_size> ChineseCharac;

// A cross for an ideograph that is not in the table.
extern const std::array<uint8_t, chinese_entry_size> ChineseNone;

// The Cyrillic letters in the order of the alphabet, the 33 capital ones first; a cross for others;
// accented Latin letters without codes, the Turkish ones first. No operation draws them.
extern const std::array<uint8_t, russian_entries * russian_entry_size> RussianCharac;
extern const std::array<uint8_t, russian_entry_size> RussianNone;
extern const std::array<uint8_t, turkey_glyphs * narrow_glyph_size> TurkeyCharacSpec;

static_assert(sizeof(AsciiCharac) == 2561);
static_assert(sizeof(ChineseCharac) == 9576);
static_assert(sizeof(ChineseNone) == 36);
static_assert(sizeof(RussianCharac) == 1320);
static_assert(sizeof(RussianNone) == 20);
static_assert(sizeof(TurkeyCharacSpec) == 384);

} // namespace renewer
