#include "package/package.h"

#include "package/reading.h"
#include "platform/debug.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace renewer {

namespace {

constexpr size_t magic_path_size = 128;

// Opens the file for `get_magic`, which takes paths of up to 127 bytes.
owned_file open_for_magic(const char *path) {
    char copy[magic_path_size] = {};
    if (strlen(path) >= sizeof(copy)) {
        errno = ENAMETOOLONG;
        return nullptr;
    }
    strcpy(copy, path);
    debug(5, "pPACK=%s\n", path);
    debug(5, "path=%s\n", copy);
    return open_package(copy);
}

} // namespace

int get_pack_head(const char *path, pack_head *out) {
    const owned_file package = open_package(path);
    if (package == nullptr || out == nullptr) {
        return 0;
    }
    return fread(out, 1, sizeof(*out), package.get()) == sizeof(*out) ? 1 : 0;
}

int get_pack_head_new(const char *packpath, pack_head_new *out) {
    const owned_file package = open_package(packpath);
    if (package == nullptr || out == nullptr) {
        return 0;
    }
    return read_head_new(package.get(), out) ? 1 : 0;
}

int get_magic(const char *path, void *out) {
    if (path == nullptr || out == nullptr) {
        debug(5, "path error!\n");
        return 0;
    }
    const owned_file package = open_for_magic(path);
    if (package == nullptr) {
        perror("fopen");
        debug(5, "open err\n");
        debug(5, "get_pack22222222=%s\n", path);
        return 0;
    }
    debug(5, "get_pack=%s\n", path);
    const size_t taken = fread(out, 1, sizeof(uint32_t), package.get());
    printf("ret=%d\n", static_cast<int>(taken));
    return 1;
}

int is_package_type([[maybe_unused]] unsigned type) {
    return 1;
}

} // namespace renewer
