#pragma once

#include "package_file.h"

namespace pack {

// Prints header and node table as bytes, one or more lines for each field, with its name and value.
void print_bytes(const package_file &package);

} // namespace pack
