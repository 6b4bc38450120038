#pragma once

namespace boundary {

// Whether the disk of the file at this path is simulated as full (see `full_disk_path`).
bool disk_is_full(const char *path);

} // namespace boundary
