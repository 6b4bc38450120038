#pragma once

#include "lists.h"

#include <filesystem>
#include <string>
#include <vector>

namespace fonts {

// Looks through the texts in double quotes of a C++ file for characters that are neither ASCII nor
// among the ideographs.
//
// Returns a line for each, "FILE:LINE: no glyph for X (U+NNNN)", in their order. Throws
// std::runtime_error when the file cannot be read or is no UTF-8.
std::vector<std::string> characters_without_glyph(const std::filesystem::path &file,
                                                  const lists &characters);

} // namespace fonts
