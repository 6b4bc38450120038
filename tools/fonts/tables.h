#pragma once

#include "hex_font.h"
#include "lists.h"

#include <cstdint>
#include <string>
#include <vector>

namespace fonts {

struct table {
    std::string name;
    std::vector<uint8_t> bytes;
};

// The six tables in the layout of the header that declares them.
//
// Throws std::runtime_error when the font has no glyph of the right width for a character.
std::vector<table> make_tables(const lists &characters, const hex_font &font);

} // namespace fonts
