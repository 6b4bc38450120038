#include "oled/ssd1327zb_fonts.h"

#include "oled/ssd1327zb_draw_text.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <string>

using namespace renewer;

namespace {

const std::string capitals = "АБВГДЕЁЖЗИЙКЛМНОПРСТУФХЦЧШЩЪЫЬЭЮЯ";
const std::string smalls = "абвгдеёжзийклмнопрстуфхцчшщъыьэюя";

// The code bytes of an entry, without the zeros at their end.
std::string code_of(const uint8_t *entry, size_t glyph_size) {
    std::string code(entry + glyph_size, entry + glyph_size + 4);
    code.resize(code.find_last_not_of('\0') + 1);
    return code;
}

std::vector<std::string> chinese_codes() {
    std::vector<std::string> codes;
    for (size_t i = 0; i < 266; ++i) {
        codes.push_back(code_of(&ChineseCharac[i * 36], 32));
    }
    return codes;
}

bool is_accepted(const std::string &code) {
    return code.size() == 3 && code >= "\xE4\xB8\x80" && code <= "\xE9\xBE\xA5";
}

// The rows of the installed font's glyphs, in hexadecimal, by code point.
std::map<unsigned long, std::string> installed_font() {
    std::map<unsigned long, std::string> glyphs;
    std::ifstream file(HEX_FONT);
    for (std::string line; std::getline(file, line);) {
        glyphs[std::stoul(line, nullptr, 16)] = line.substr(line.find(':') + 1);
    }
    return glyphs;
}

// A rendered text of one character in the form of the font's file.
std::string rendered(const std::string &text, size_t columns) {
    std::vector<uint8_t> pixels(columns * 16);
    strbuf strip = {0, 16, pixels.data(), static_cast<uint32_t>(pixels.size())};
    EXPECT_EQ(ssd1327zb_str_to_strbuf(text.c_str(), &strip), &strip) << text;
    std::string digits;
    for (size_t i = 0; i < pixels.size(); i += 4) {
        const int value = pixels[i] / 15 * 8 + pixels[i + 1] / 15 * 4 + pixels[i + 2] / 15 * 2 +
                          pixels[i + 3] / 15;
        digits += "0123456789ABCDEF"[value];
    }
    return digits;
}

TEST(ssd1327zb_fonts, draw_as_the_installed_font_does) {
    const auto font = installed_font();
    for (char c = 32; c < 127; ++c) {
        EXPECT_EQ(rendered(std::string(1, c), 8), font.at(static_cast<unsigned long>(c))) << c;
    }
    for (const std::string &code : chinese_codes()) {
        if (is_accepted(code)) {
            const auto bits = [&code](size_t i, int mask) {
                return static_cast<unsigned long>(code[i] & mask);
            };
            const unsigned long point = bits(0, 0x0F) << 12 | bits(1, 0x3F) << 6 | bits(2, 0x3F);
            EXPECT_EQ(rendered(code, 16), font.at(point)) << code;
        }
    }
}

TEST(ssd1327zb_fonts, have_a_symbol_for_each_control_code) {
    std::set<std::string> symbols;
    for (int code = 1; code < 128; code = code == 31 ? 127 : code + 1) {
        symbols.insert(rendered(std::string(1, static_cast<char>(code)), 8));
    }
    EXPECT_EQ(symbols.size(), 32u) << "each its own";
    EXPECT_FALSE(symbols.contains(std::string(32, '0')));
    EXPECT_EQ(std::count(AsciiCharac.begin(), AsciiCharac.begin() + 16, 0), 16) << "code 0";
    EXPECT_EQ(AsciiCharac.back(), 0);
}

TEST(ssd1327zb_fonts, hold_196_ideographs_and_68_entries_that_no_text_finds) {
    std::multiset<std::string> accepted;
    std::multiset<std::string> others;
    for (const std::string &code : chinese_codes()) {
        (is_accepted(code) ? accepted : others).insert(code);
    }
    EXPECT_EQ(accepted.size(), 198u);
    EXPECT_EQ((std::set<std::string>(accepted.begin(), accepted.end()).size()), 196u);
    const std::string usual = "电量不足英文盘退出下载外接电源支持";
    for (size_t i = 0; i < usual.size(); i += 3) {
        EXPECT_TRUE(accepted.contains(usual.substr(i, 3))) << usual.substr(i, 3);
    }
    std::multiset<std::string> expected = {" ", "℃"};
    for (size_t i = 0; i < capitals.size(); i += 2) {
        expected.insert({capitals.substr(i, 2), smalls.substr(i, 2)});
    }
    EXPECT_EQ(others, expected);
}

TEST(ssd1327zb_fonts, hold_the_cyrillic_alphabet_in_its_order) {
    const auto font = installed_font();
    std::string letters;
    for (size_t i = 0; i < 66; ++i) {
        letters += code_of(&RussianCharac[i * 20], 16);
    }
    EXPECT_EQ(letters, capitals + smalls);
    // The wide cells have the same letters in their middle.
    const std::vector<std::string> codes = chinese_codes();
    for (size_t i = 0; i < 66; ++i) {
        const size_t wide = static_cast<size_t>(
            std::find(codes.begin(), codes.end(), letters.substr(2 * i, 2)) - codes.begin());
        ASSERT_LT(wide, codes.size());
        for (size_t half = 0; half < 2; ++half) {
            const auto narrow = RussianCharac.begin() + static_cast<ptrdiff_t>(i * 20 + half * 8);
            EXPECT_TRUE(std::equal(narrow, narrow + 8, &ChineseCharac[wide * 36 + half * 16 + 4]))
                << letters.substr(2 * i, 2);
        }
    }
}

TEST(ssd1327zb_fonts, cross_out_what_they_lack) {
    EXPECT_EQ(code_of(RussianNone.data(), 16), "");
    EXPECT_EQ(code_of(ChineseNone.data(), 32), "");
    const std::array<uint8_t, 16> narrow_cross = {0x03, 0x0C, 0x30, 0xC0, 0xC0, 0x30, 0x0C, 0x03,
                                                  0xC0, 0x30, 0x0C, 0x03, 0x03, 0x0C, 0x30, 0xC0};
    EXPECT_TRUE(std::equal(narrow_cross.begin(), narrow_cross.end(), RussianNone.begin()));
}

TEST(ssd1327zb_fonts, begin_the_accented_letters_with_the_turkish_ones) {
    const auto font = installed_font();
    const char32_t turkish[] = U"ÇçĞğİıÖöŞşÜü";
    for (size_t i = 0; i < 12; ++i) {
        const std::string rows = font.at(turkish[i]);
        for (size_t row = 0; row < 16; ++row) {
            const unsigned long bits = std::stoul(rows.substr(2 * row, 2), nullptr, 16);
            for (size_t column = 0; column < 8; ++column) {
                const int byte = TurkeyCharacSpec[i * 16 + row / 8 * 8 + column];
                EXPECT_EQ(byte >> row % 8 & 1, static_cast<int>(bits >> (7 - column) & 1)) << i;
            }
        }
    }
}

} // namespace
