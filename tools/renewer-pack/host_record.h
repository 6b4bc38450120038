#pragma once

#include "unit/host_info.h"

#include <filesystem>
#include <string>

namespace pack {

// Reads the host record of a unit, "/update/hw/sys" there: seven bytes that nobody reads, then the
// part number up to its zero byte, all in 77 bytes or fewer.
//
// Throws `misused` for a file that is no host record, std::system_error when it cannot be read.
renewer::host_info read_host_record(const std::filesystem::path &path);

// The part number as a text.
std::string part_number_of(const renewer::host_info &host);

// Characters `place` to `place` + `count` - 1 of the part number; shorter where it ends.
std::string characters_of(const renewer::host_info &host, size_t place, size_t count);

} // namespace pack
