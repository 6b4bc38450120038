// Simulates a full disk.

#include "simulator/boundary/disk.h"

#include "simulator/boundary/process.h"
#include "simulator/boundary/protocol.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace boundary {

bool disk_is_full(const char *path) {
    constexpr const char *no_disks[] = {"/dev/", "/proc/", "/sys/"};
    for (const char *no_disk : no_disks) {
        if (strncmp(path, no_disk, strlen(no_disk)) == 0) {
            return false;
        }
    }
    const int file = open(simulator::full_disk_path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    char full[256];
    const ssize_t size = read(file, full, sizeof(full));
    close(file);
    return size > 0 && strncmp(path, full, static_cast<size_t>(size)) == 0;
}

} // namespace boundary

extern "C" {

// cp(1) tries this call first and falls back to write(2).
ssize_t copy_file_range(int from, off64_t *from_at, int to, off64_t *to_at, size_t count,
                        unsigned flags) {
    char path[256];
    boundary::descriptor_path(to, path);
    if (boundary::disk_is_full(path)) {
        errno = ENOSPC;
        return -1;
    }
    return boundary::next<decltype(copy_file_range)>("copy_file_range")(from, from_at, to, to_at,
                                                                        count, flags);
}

} // extern "C"
