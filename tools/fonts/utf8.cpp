#include "utf8.h"

#include <array>
#include <cstdint>
#include <stdexcept>

namespace fonts {

namespace {

// Lead bytes and what they hold, by the number of bytes that follow them.
struct form {
    unsigned mask, lead;
    char32_t lowest;
};
constexpr std::array<form, 4> forms = {
    {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}}};

char32_t take(std::string_view &text) {
    const auto lead = static_cast<uint8_t>(text[0]);
    size_t following = 0;
    while (following < forms.size() && (lead & forms[following].mask) != forms[following].lead) {
        ++following;
    }
    if (following == forms.size() || text.size() <= following) {
        throw std::runtime_error("not UTF-8");
    }
    char32_t value = lead & ~forms[following].mask;
    for (const char c : text.substr(1, following)) {
        if ((static_cast<uint8_t>(c) & 0xC0) != 0x80) {
            throw std::runtime_error("not UTF-8");
        }
        value = value << 6 | (static_cast<uint8_t>(c) & 0x3F);
    }
    if (value < forms[following].lowest) {
        throw std::runtime_error("not UTF-8");
    }
    text.remove_prefix(following + 1);
    return value;
}

} // namespace

std::u32string characters_of(std::string_view text) {
    std::u32string result;
    while (!text.empty()) {
        result += take(text);
    }
    return result;
}

std::string utf8_of(char32_t character) {
    size_t following = forms.size() - 1;
    while (character < forms[following].lowest) {
        --following;
    }
    std::string result(1, static_cast<char>(forms[following].lead | character >> (6 * following)));
    while (following-- > 0) {
        result += static_cast<char>(0x80 | (character >> (6 * following) & 0x3F));
    }
    return result;
}

} // namespace fonts
