#pragma once

#include "unit/host_info.h"

#include <filesystem>
#include <string>

namespace pack {

// Reads the host record of a unit, "/update/hw/sys" there: seven unused bytes, then the part number
// up to its zero byte, together at most 77 bytes.
//
// Throws `usage_error` if the file is not a host record, std::system_error if it cannot be read.
renewer::host_info read_host_record(const std::filesystem::path &path);

// The part number as a string.
std::string part_number_of(const renewer::host_info &host);

// Characters `place` to `place` + `count` - 1 of the part number, fewer if it ends before.
std::string characters_of(const renewer::host_info &host, size_t place, size_t count);

} // namespace pack
