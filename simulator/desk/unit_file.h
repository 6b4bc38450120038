#pragma once

#include "simulator/desk/unit_description.h"

namespace simulator {

// Reads a unit file (YAML, and so JSON too; simulator/desk/unit.schema.json says what it may hold).
// Paths in it are taken from where the file is. Throws std::runtime_error with file, line and field
// for what it should not hold: "unit.yaml:3: battery: ...".
unit_description read_unit_file(const std::filesystem::path &path);

} // namespace simulator
