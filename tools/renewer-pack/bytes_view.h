#pragma once

#include "package_file.h"

namespace pack {

// Prints header and node table as bytes, a line or more for each field with its name and its value.
void print_bytes(const package_file &package);

} // namespace pack
