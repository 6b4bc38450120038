#include "tables.h"

#include "utf8.h"

#include <stdexcept>

namespace fonts {

namespace {

using bytes = std::vector<uint8_t>;

constexpr int narrow = 8;
constexpr int wide = 16;
constexpr size_t ascii_glyphs = 160;

void append(bytes &to, const bytes &more) {
    to.insert(to.end(), more.begin(), more.end());
}

// The cell's bytes: a column of 8 rows each, bit 0 topmost, first of the upper half, then of the
// lower one. A narrow glyph lies in the middle of a wide cell.
bytes cell(const glyph &from, int columns) {
    if (from.width > columns) {
        throw std::runtime_error("a glyph is too wide for its cell");
    }
    const int left = (columns - from.width) / 2;
    bytes result;
    for (const int top : {0, 8}) {
        for (int column = 0; column < columns; ++column) {
            unsigned byte = 0;
            for (int row = 0; row < 8; ++row) {
                const unsigned pixels = from.rows[static_cast<size_t>(top + row)];
                const int bit = 15 - (column - left);
                byte |= bit >= 0 && bit <= 15 ? (pixels >> bit & 1) << row : 0;
            }
            result.push_back(static_cast<uint8_t>(byte));
        }
    }
    return result;
}

glyph blank(int width) {
    return {width, {}};
}

glyph cross(int width) {
    glyph result = blank(width);
    for (size_t row = 0; row < result.rows.size(); ++row) {
        const size_t column = row * static_cast<size_t>(width) / result.rows.size();
        const size_t mirrored = static_cast<size_t>(width) - 1 - column;
        result.rows[row] = static_cast<uint16_t>(0x8000 >> column | 0x8000 >> mirrored);
    }
    return result;
}

// A cell with the character's code after it, in four bytes.
bytes entry(const glyph &from, int columns, std::string code) {
    bytes result = cell(from, columns);
    code.resize(4);
    append(result, bytes(code.begin(), code.end()));
    return result;
}

bytes ascii_table(const lists &characters, const hex_font &font) {
    bytes result;
    for (char32_t code = 0; code < ascii_glyphs; ++code) {
        if (code == 0 || code > 127) {
            append(result, cell(blank(narrow), narrow));
        } else if (code < 32 || code == 127) {
            const size_t symbol = code == 127 ? 31 : code - 1;
            append(result, cell(font.at(characters.symbols[symbol]), narrow));
        } else {
            append(result, cell(font.at(code), narrow));
        }
    }
    result.push_back(0);
    return result;
}

bytes chinese_table(const lists &characters, const hex_font &font) {
    bytes result;
    const auto add_all = [&](const std::u32string &some) {
        for (const char32_t character : some) {
            append(result, entry(font.at(character), wide, utf8_of(character)));
        }
    };
    add_all(characters.ideographs);
    add_all(characters.repeats);
    append(result, entry(blank(wide), wide, " "));
    add_all(characters.signs);
    add_all(characters.cyrillic);
    return result;
}

bytes narrow_table(const std::u32string &characters, const hex_font &font, bool with_codes) {
    bytes result;
    for (const char32_t character : characters) {
        append(result, with_codes ? entry(font.at(character), narrow, utf8_of(character))
                                  : cell(font.at(character), narrow));
    }
    return result;
}

} // namespace

std::vector<table> make_tables(const lists &characters, const hex_font &font) {
    return {
        {"AsciiCharac", ascii_table(characters, font)},
        {"ChineseCharac", chinese_table(characters, font)},
        {"ChineseNone", entry(cross(wide), wide, "")},
        {"RussianCharac", narrow_table(characters.cyrillic, font, true)},
        {"RussianNone", entry(cross(narrow), narrow, "")},
        {"TurkeyCharacSpec", narrow_table(characters.latin, font, false)},
    };
}

} // namespace fonts
