#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace fonts {

// A character's pixels in a bitmap font of 16 rows: the leftmost is bit 15 of its row.
struct glyph {
    int width; // 8 or 16
    std::array<uint16_t, 16> rows;
};

// The glyphs of a .hex file: lines of a code point and the rows from the top, in hexadecimal,
// 2 or 4 digits a row, after a colon.
class hex_font {
public:
    // Throws std::runtime_error when the file cannot be read as one.
    explicit hex_font(const std::filesystem::path &file);

    // Throws std::runtime_error when there is none.
    glyph at(char32_t character) const;

private:
    std::string text;
    std::map<char32_t, std::string_view> digits;
};

} // namespace fonts
