#include "package/package.h"

#include "package/reading.h"
#include "platform/debug.h"
#include "platform/files.h"
#include "platform/shell.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/stat.h>

namespace renewer {

namespace {

constexpr size_t out_path_size = 256;

// Builds the path of a node's file; false when it does not fit.
bool build_out_path(char (&path)[out_path_size], const char *out_dir, uint32_t type) {
    const char *const name = node_type_to_str(static_cast<int>(type));
    const char *const suffix = node_file_suffix(type);
    const int length = out_dir == nullptr
                           ? snprintf(path, sizeof(path), "%s%s", name, suffix)
                           : snprintf(path, sizeof(path), "%s/%s%s", out_dir, name, suffix);
    return length >= 0 && static_cast<size_t>(length) < sizeof(path);
}

// Copies up to `size` bytes, as many as there are; false when they could not be read or written.
bool copy_payload(FILE *in, uint32_t size, FILE *out) {
    transfer_buffer chunk;
    clearerr(in); // the end of file of an earlier node
    uint32_t remaining = size;
    while (remaining > 0) {
        const size_t wanted = std::min<size_t>(chunk.size(), remaining);
        const size_t taken = fread(chunk.bytes(), 1, wanted, in);
        if (taken == 0) {
            break;
        }
        if (fwrite(chunk.bytes(), 1, taken, out) < taken) {
            return false;
        }
        remaining -= static_cast<uint32_t>(taken);
    }
    return ferror(in) == 0 && fflush(out) == 0;
}

// Extracts a node into its file. A failure is reported, and the file is left as it is then.
void unpack_node(FILE *package, const pack_node &node, const char *path) {
    if (is_open_file(path, package)) {
        debug(1, "%s is the package itself, left out\n", path);
        return;
    }
    if (node_to_file(package, &node, path) == 0) {
        debug(1, "%s could not be written: %s\n", path, strerror(errno));
    }
    if (node.type == install_type) {
        chmod(path, install_mode);
    }
}

int unpack_nodes(FILE *package, uint32_t count, const pack_node *nodes, const char *out_dir) {
    char path[out_path_size];
    for (uint32_t i = 0; i < count; ++i) {
        // All paths are checked before anything is written.
        if (!build_out_path(path, out_dir, nodes[i].type)) {
            return 0;
        }
    }
    if (out_dir != nullptr) {
        shell_with_argument("mkdir -p", out_dir);
    }
    for (uint32_t i = 0; i < count; ++i) {
        build_out_path(path, out_dir, nodes[i].type);
        printf("outpath : %s\n", path);
        unpack_node(package, nodes[i], path);
        show_node(static_cast<int>(i), nodes[i]);
    }
    return 1;
}

// Reads the last word of the version text's area, whose value is not used.
bool probe_version_area(FILE *package, uint32_t head_len) {
    uint32_t word = 0;
    return seek_to(package, align4(head_len) - 4) && fread(&word, 1, sizeof(word), package) > 0;
}

bool skip_version_text(FILE *package, pack_head_new *head) {
    const bool has_text = read_version_text(package, head);
    const owned_memory<char> version(head->version_content);
    head->version_content = nullptr;
    if (!has_text && version != nullptr) {
        debug(1, "read header version faile!\n");
    }
    return has_text;
}

} // namespace

int node_to_file(FILE *in, const pack_node *node, const char *outpath) {
    if (node == nullptr || outpath == nullptr) {
        return 0;
    }
    if (in != nullptr && is_open_file(outpath, in)) {
        return 0;
    }
    const owned_file out(fopen(outpath, "w+e"));
    if (out == nullptr || in == nullptr) {
        return 0;
    }
    make_unbuffered(out.get());
    return seek_to(in, node->offset) && copy_payload(in, node->size, out.get()) ? 1 : 0;
}

int unpack_package(const char *path, const char *out_dir) {
    const owned_file package = open_package(path);
    if (package == nullptr) {
        return 0;
    }
    pack_head head = {};
    if (fread(&head, 1, sizeof(head), package.get()) == 0) {
        return 0;
    }
    const owned_memory<pack_node> nodes = read_node_table(package.get(), sizeof(head), head.count);
    if (nodes == nullptr) {
        return 0;
    }
    return unpack_nodes(package.get(), head.count, nodes.get(), out_dir);
}

int unpack_package_new(const char *path, const char *out_dir) {
    if (path == nullptr) {
        return 0;
    }
    const owned_file package = open_package(path);
    if (package == nullptr) {
        debug(1, "open fail!\n");
        return 0;
    }
    pack_head_new head = {};
    debug(5, "unpackflg1\n");
    if (fread(&head, 1, pack_head_new_size, package.get()) == 0) {
        debug(1, "read header faile!\n");
        return 0;
    }
    debug(5, "unpackflg1\n");
    debug(5, "unpackflg2\n");
    debug(5, "head_version len =%d\n", static_cast<int>(head.version_len));
    debug(5, "unpackflg3\n");
    if (!skip_version_text(package.get(), &head)) {
        return 0;
    }
    if (!probe_version_area(package.get(), head.head_len)) {
        debug(1, "read header md5 faile!\n");
        return 0;
    }
    debug(5, "fseek###########\n");
    const owned_memory<pack_node> nodes =
        read_node_table(package.get(), node_table_offset(head.head_len), head.count);
    if (nodes == nullptr) {
        return 0;
    }
    return unpack_nodes(package.get(), head.count, nodes.get(), out_dir);
}

} // namespace renewer
