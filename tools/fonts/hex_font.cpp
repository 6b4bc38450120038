#include "hex_font.h"

#include "utf8.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace fonts {

namespace {

glyph parse(std::string_view digits) {
    glyph result{static_cast<int>(digits.size() / 4), {}};
    const size_t row_digits = digits.size() / result.rows.size();
    for (size_t row = 0; row < result.rows.size(); ++row) {
        const std::string one(digits.substr(row * row_digits, row_digits));
        result.rows[row] =
            static_cast<uint16_t>(std::stoul(one, nullptr, 16) << (16 - result.width));
    }
    return result;
}

} // namespace

hex_font::hex_font(const std::filesystem::path &file) {
    std::ifstream stream(file);
    text.assign(std::istreambuf_iterator<char>(stream), {});
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find('\n', start), text.size());
        const auto line = std::string_view(text).substr(start, end - start);
        const size_t colon = line.find(':');
        const size_t count = colon == line.npos ? 0 : line.size() - colon - 1;
        if (count != 32 && count != 64) {
            throw std::runtime_error(file.string() + ": cannot follow \"" + std::string(line) +
                                     "\"");
        }
        const unsigned long code = strtoul(text.c_str() + start, nullptr, 16);
        digits.emplace_hint(digits.end(), code, line.substr(colon + 1));
        start = end + 1;
    }
    if (digits.empty()) {
        throw std::runtime_error("cannot read " + file.string());
    }
}

glyph hex_font::at(char32_t character) const {
    const auto found = digits.find(character);
    if (found == digits.end()) {
        throw std::runtime_error("the font has no glyph for " + utf8_of(character));
    }
    return parse(found->second);
}

} // namespace fonts
