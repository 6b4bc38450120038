#pragma once

#include <string>
#include <string_view>

namespace fonts {

// The characters of a text in UTF-8 (RFC 3629). Throws std::runtime_error when it is none.
std::u32string characters_of(std::string_view text);

// The UTF-8 bytes of a character.
std::string utf8_of(char32_t character);

} // namespace fonts
