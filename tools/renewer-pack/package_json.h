#pragma once

#include "json_output.h"
#include "package_file.h"

#include <string>
#include <vector>

namespace pack {

// The header's fields, as texts and numbers.
json header_of(const package_file &package);

// A package with its header, its nodes and what is wrong with it. A file that is no package has its
// defects alone.
json document_of(const examination &examined);

} // namespace pack
