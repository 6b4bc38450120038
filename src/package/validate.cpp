#include "package/package.h"

#include "package/digest.h"
#include "package/reading.h"
#include "platform/debug.h"

#include <cstring>

namespace renewer {

namespace {

int refuse(const char *message) {
    debug(0, "%s", message);
    return 0;
}

bool is_new_layout_magic(uint32_t magic) {
    return magic == magic_old || magic == magic_new_1 || magic == magic_new;
}

// Compares the digest of the package with the one that its header carries, byte by byte.
int check_digest(FILE *package, const uint8_t *stored) {
    const package_digest digest = digest_package(package);
    if (!digest.complete) {
        return refuse("read fail!\n");
    }
    for (int i = 0; i < static_cast<int>(md5_size); ++i) {
        debug(5, "digest[%d] %02x", i, digest.bytes[i]);
        debug(5, "\n");
        debug(5, "md5[%d] %02x", i, stored[i]);
        debug(5, "\n");
        if (digest.bytes[i] != stored[i]) {
            return refuse("md5 error!\n");
        }
    }
    return 1;
}

} // namespace

int validate_package(const char *path) {
    if (path == nullptr) {
        return refuse("path error!\n");
    }
    const owned_file package = open_package(path);
    if (package == nullptr) {
        return refuse("open fail!\n");
    }
    pack_head head = {};
    if (fread(&head, 1, sizeof(head), package.get()) < sizeof(head)) {
        return refuse("size differently!\n");
    }
    if (head.magic != magic_old) {
        return refuse("header error!\n");
    }
    return check_digest(package.get(), head.md5);
}

int validate_package_new(const char *path) {
    if (path == nullptr) {
        return refuse("path error!\n");
    }
    const owned_file package = open_package(path);
    pack_head_new head = {};
    const bool has_header = package != nullptr && read_head_new(package.get(), &head);
    const owned_memory<char> version(head.version_content);
    if (!has_header) {
        return refuse(" Get header error!\n");
    }
    if (!is_new_layout_magic(head.magic)) {
        return refuse("header error!\n");
    }
    return check_digest(package.get(), head.md5);
}

} // namespace renewer
