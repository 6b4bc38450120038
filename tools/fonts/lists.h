#pragma once

#include <filesystem>
#include <string>

// The lists of characters from which the glyph tables are made; the file itself says how it reads.
namespace fonts {

struct lists {
    std::u32string symbols;    // 32, for the codes 1 to 31 and 127
    std::u32string ideographs; // 196, each once
    std::u32string repeats;    // 2 of the ideographs
    std::u32string signs;      // 1
    std::u32string cyrillic;   // 33 capital and 33 small letters
    std::u32string latin;      // 24
};

// Throws std::runtime_error, which says what is wrong, for lists that do not fill the tables.
lists read_lists(const std::filesystem::path &file);

} // namespace fonts
