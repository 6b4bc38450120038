#pragma once

#include "simulator/desk/unit_description.h"

namespace simulator {

// Reads a unit file (YAML or JSON; the format is described by simulator/desk/unit.schema.json).
// Paths are relative to the file's directory. Throws std::runtime_error with file, line and field
// if something is wrong: "unit.yaml:3: battery: ...".
unit_description read_unit_file(const std::filesystem::path &path);

} // namespace simulator
