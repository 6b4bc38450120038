#pragma once

#include "json_output.h"
#include "package_file.h"

#include <string>
#include <vector>

namespace pack {

// The header's fields as strings and numbers.
json header_of(const package_file &package);

// A package with its header, nodes and defects; if it is not a package, the defects only.
json document_of(const examination &examined);

} // namespace pack
