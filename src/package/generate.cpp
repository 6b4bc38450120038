#include "package/package.h"

#include "package/digest.h"
#include "package/reading.h"
#include "platform/debug.h"
#include "platform/files.h"

#include <algorithm>
#include <cstring>
#include <sys/stat.h>
#include <sys/types.h>

namespace renewer {

namespace {

constexpr size_t version_text_size = 15;
constexpr size_t most_nodes = 64; // the node types that can carry a file
constexpr char zeros[8] = {};

// A package that is being made.
struct generation {
    pack_head_new head;
    char version[version_text_size];
    pack_node nodes[most_nodes];
    const char *paths[most_nodes];
    int count;
};

bool whole(int length, size_t size) {
    return length >= 0 && static_cast<size_t>(length) < size;
}

bool shorter_than(const char *text, size_t size) {
    return text != nullptr && strlen(text) < size;
}

bool format_version(const package_plan &plan, char (&text)[version_text_size]) {
    return whole(snprintf(text, sizeof(text), "%d.%d.%d.%d", plan.version[0], plan.version[1],
                          plan.version[2], plan.version[3]),
                 sizeof(text));
}

bool format_time(const struct tm &made, pack_head_new *head) {
    return whole(snprintf(head->date, sizeof(head->date), "%04d%02d%02d", made.tm_year + 1900,
                          made.tm_mon + 1, made.tm_mday),
                 sizeof(head->date)) &&
           whole(snprintf(head->time, sizeof(head->time), "%02d.%02d.%02d", made.tm_hour,
                          made.tm_min, made.tm_sec),
                 sizeof(head->time));
}

// Fills the fixed header and the version text; false when a text does not fit its field.
bool fill_header(const package_plan &plan, generation *package) {
    pack_head_new &head = package->head;
    if (!shorter_than(plan.git_version, sizeof(head.git_version)) ||
        !shorter_than(plan.pn, sizeof(head.pn)) || !format_version(plan, package->version) ||
        !format_time(plan.made, &head)) {
        return false;
    }
    head.magic = magic_new;
    head.head_version = 1;
    // A placeholder until `seal`.
    for (uint8_t i = 0; i < md5_size; ++i) {
        head.md5[i] = i;
    }
    strcpy(head.git_version, plan.git_version);
    strcpy(head.pn, plan.pn);
    head.pnlen = static_cast<uint32_t>(strlen(plan.pn));
    head.version_len = static_cast<uint32_t>(strlen(package->version) + 1);
    head.head_len = static_cast<uint32_t>(pack_head_new_size) + head.version_len;
    return true;
}

// Whether the package would overwrite one of its own sources.
bool is_a_source(const char *packpath, const package_plan &plan) {
    struct stat target = {};
    return stat(packpath, &target) == 0 &&
           std::any_of(plan.sources.begin(), plan.sources.end(), [&](const char *source) {
               return source != nullptr && is_file(source, target);
           });
}

bool register_sources(const package_plan &plan, generation *package) {
    for (size_t type = 1; type < plan.sources.size(); ++type) {
        const uint64_t flag_bits = node_type_flag(static_cast<int>(type));
        if (flag_bits != 0 &&
            register_file(&package->head, package->nodes, plan.sources[type], package->paths,
                          flag_bits, static_cast<int>(type), &package->count) == 0) {
            return false;
        }
    }
    package->head.count = static_cast<uint32_t>(package->count);
    return true;
}

bool write_bytes(const void *bytes, size_t size, FILE *out) {
    return fwrite(bytes, 1, size, out) == size;
}

// Appends one node's payload and its padding at the position of the stream, which becomes the
// node's offset. A source whose size has changed since it was registered fails.
bool write_payload(FILE *out, int index, const char *path, pack_node *node) {
    const off_t begin = ftello(out);
    if (begin < 0 || begin > off_t{UINT32_MAX}) {
        return false;
    }
    node->offset = static_cast<uint32_t>(begin);
    if (copy_to_stream(path, out) != 1 || ftello(out) != begin + off_t{node->size}) {
        return false;
    }
    // Every payload begins at a multiple of 4.
    const uint32_t padding = (4 - node->size % 4) % 4;
    if (!write_bytes(zeros, padding, out)) {
        return false;
    }
    debug(5, "nodes[ %d ].size : %u padding : %u offset : %lld\n", index, node->size, padding,
          static_cast<long long>(begin + off_t{node->size} + off_t{padding}));
    return true;
}

bool write_payloads(FILE *out, generation *package) {
    const uint64_t table = node_table_offset(package->head.head_len);
    if (!seek_to(out, table + sizeof(pack_node) * package->head.count)) {
        return false;
    }
    for (int i = 0; i < package->count; ++i) {
        if (!write_payload(out, i, package->paths[i], &package->nodes[i])) {
            return false;
        }
    }
    return true;
}

bool write_node_table(FILE *out, const generation &package) {
    if (!seek_to(out, node_table_offset(package.head.head_len))) {
        return false;
    }
    for (int i = 0; i < package.count; ++i) {
        debug(5, "nodes[%d].type=%u\n", i, package.nodes[i].type);
        if (!write_bytes(&package.nodes[i], sizeof(pack_node), out)) {
            return false;
        }
    }
    return true;
}

// Writes everything before the node table, and flushes the file.
bool write_header(FILE *out, const generation &package) {
    const uint32_t head_len = package.head.head_len;
    const auto fill = static_cast<size_t>(node_table_offset(head_len) - head_len);
    return seek_to(out, 0) && write_bytes(&package.head, pack_head_new_size, out) &&
           write_bytes(package.version, package.head.version_len, out) &&
           write_bytes(zeros, fill, out) && fflush(out) == 0;
}

// Replaces the placeholder by the digest when everything else is in the file.
bool seal(FILE *out) {
    const package_digest digest = digest_package(out);
    if (!digest.complete) {
        return false;
    }
    printf("md5 : ");
    for (const uint8_t byte : digest.bytes) {
        printf("%02x", byte);
    }
    printf("\n");
    return seek_to(out, offsetof(pack_head_new, md5)) && write_bytes(digest.bytes, md5_size, out) &&
           fflush(out) == 0;
}

} // namespace

uint32_t get_file_size(const char *path) {
    if (path == nullptr) {
        return 0;
    }
    struct stat status = {};
    if (stat(path, &status) != 0 || S_ISDIR(status.st_mode) || status.st_size > off_t{UINT32_MAX}) {
        debug(0, "Error path invalid : %s\n", path);
        return 0;
    }
    return static_cast<uint32_t>(status.st_size);
}

int register_file(pack_head_new *head, pack_node *nodes, const char *path, const char **paths,
                  uint64_t flag_bits, int type, int *count) {
    if (path == nullptr) {
        return 1;
    }
    head->flag |= flag_bits;
    const uint32_t size = get_file_size(path);
    if (size == 0) {
        return 0;
    }
    nodes[*count] = {.type = static_cast<uint32_t>(type), .offset = 0, .size = size};
    paths[*count] = path;
    debug(5, "pack type=%d\n", type);
    ++*count;
    return 1;
}

int copy_to_stream(const char *path, FILE *stream) {
    const owned_file in = open_package(path);
    if (in == nullptr || stream == nullptr || is_open_file(path, stream)) {
        return 0;
    }
    transfer_buffer chunk;
    while (const size_t taken = fread(chunk.bytes(), 1, chunk.size(), in.get())) {
        if (!write_bytes(chunk.bytes(), taken, stream)) {
            return 0;
        }
    }
    return ferror(in.get()) == 0 ? 1 : 0;
}

int write_package(const package_plan &plan, const char *packpath) {
    generation package = {};
    if (packpath == nullptr || !fill_header(plan, &package)) {
        return 0;
    }
    // Before "w+" empties the file.
    if (is_a_source(packpath, plan)) {
        return 0;
    }
    // Readable too: the digest is made from the file.
    const owned_file out(fopen(packpath, "w+e"));
    if (out == nullptr) {
        return 0;
    }
    make_unbuffered(out.get());
    debug(1, "iMainVersion(%d) iSubVersion(%d) iReversion(%d) itypeVersion\n", plan.version[0],
          plan.version[1], plan.version[2]);
    debug(5, "gen_content=%s\n", package.version);
    if (!register_sources(plan, &package)) {
        return 0;
    }
    debug(1, "header len : %d , nodes len : %d\n", static_cast<int>(align4(package.head.head_len)),
          static_cast<int>(sizeof(pack_node)) * package.count);
    // The payloads first, since the table needs their offsets, and the header last: a package that
    // is cut short has no magic.
    return write_payloads(out.get(), &package) && write_node_table(out.get(), package) &&
                   write_header(out.get(), package) && seal(out.get())
               ? 1
               : 0;
}

} // namespace renewer
