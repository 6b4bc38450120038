#pragma once

#include "simulator/picture.h"

#include <string>

namespace simulator {

// A picture for a terminal with 24-bit colours (ECMA-48 SGR 38 and 48): a character shows two
// pixels, one above the other.
std::string terminal_text(const picture &content);

} // namespace simulator
