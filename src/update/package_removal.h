#pragma once

namespace renewer {

// Removes the unpacked package at `path` when the path begins with "/firmware/update"; other paths
// are left in place. A path that would lead out of "/firmware" through ".." or through a link is
// left in place too, with a line that says so; a link at the end of the path is removed itself,
// not what it leads to.
void remove_package(const char *path);

} // namespace renewer
