#pragma once

namespace boundary {

// Whether nothing more can be written to the file of this path (see `full_disk_path`).
bool disk_is_full(const char *path);

} // namespace boundary
