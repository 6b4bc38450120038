#include "package/package.h"

#include "package/reading.h"
#include "platform/debug.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

namespace renewer {

namespace {

// The formats take signed numbers: a value beyond 2^31 prints as a negative one.
int as_int(uint32_t value) {
    return static_cast<int>(value);
}

int bits(uint32_t word, unsigned first, unsigned width) {
    return static_cast<int>(word >> first & ((1U << width) - 1));
}

void show_bytes(const uint8_t *bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        printf("%02x", bytes[i]);
    }
}

// Prints the digits that are there: a damaged `pnlen` can claim more than the field holds.
void show_pn(const pack_head &head) {
    const uint32_t digits = std::min<uint32_t>(head.pnlen, 2 * sizeof(head.pn));
    printf("pn       : ");
    show_bytes(head.pn, digits / 2);
    if (digits % 2 != 0) {
        printf("%1x", head.pn[digits / 2] & 0xfU);
    }
    printf("\n");
}

void show_table(uint32_t count, const pack_node *nodes) {
    for (uint32_t i = 0; i < count; ++i) {
        show_node(as_int(i), nodes[i]);
    }
}

} // namespace

void show_node(int index, const pack_node &node) {
    printf("node %02d  :  type( %16s ),  offset( %d ), size( %d )\n", index,
           node_type_to_str(as_int(node.type)), as_int(node.offset), as_int(node.size));
}

void show_header(const pack_head *head) {
    if (head == nullptr) {
        return;
    }
    printf("magic    : %#0x\n", head->magic);
    printf("md5      : ");
    show_bytes(head->md5, md5_size);
    printf("\n");
    printf("version  : %d.%d.%d\n", bits(head->version, 16, 8), bits(head->version, 8, 8),
           bits(head->version, 0, 8));
    show_pn(*head);
    printf("date     : %d-%d-%d\n", bits(head->date, 9, 23), bits(head->date, 5, 4),
           bits(head->date, 0, 5));
    printf("time     : %02d:%02d:%02d\n", bits(head->time, 13, 6), bits(head->time, 6, 6),
           bits(head->time, 0, 5));
    printf("flag     : %#0x\n", head->flag);
    printf("count    : %d\n", as_int(head->count));
}

void show_header_new(const pack_head_new *head) {
    if (head == nullptr) {
        return;
    }
    const char *const version = head->version_content == nullptr ? "" : head->version_content;
    printf("magic          : %#0x\n", head->magic);
    printf("head_len       : %d\n", as_int(head->head_len));
    printf("head_version   : %d\n", as_int(head->head_version));
    printf("pnlen          : %d\n", as_int(head->pnlen));
    printf("pn             : %.*s\n", int{sizeof(head->pn)}, head->pn);
    printf("version_len    : %d\n", as_int(head->version_len));
    printf("version_content: %s\n", version);
    printf("git_version    : %.*s\n", int{sizeof(head->git_version)}, head->git_version);
    printf("date           : %.*s\n", int{sizeof(head->date)}, head->date);
    printf("time           : %.*s\n", int{sizeof(head->time)}, head->time);
    printf("flag           : %02" PRIx64 "\n", uint64_t{head->flag});
    printf("count          : %d\n", as_int(head->count));
    printf("md5            : ");
    show_bytes(head->md5, md5_size);
    printf("\n");
}

void show_nodes(const pack_head *head, const pack_node *nodes) {
    if (head != nullptr && nodes != nullptr) {
        show_table(head->count, nodes);
    }
}

void show_nodes_new(const pack_head_new *head, const pack_node *nodes) {
    if (head != nullptr && nodes != nullptr) {
        show_table(head->count, nodes);
    }
}

int show_package_info(const char *path) {
    const owned_file package = open_package(path);
    if (package == nullptr) {
        return 0;
    }
    pack_head head = {};
    if (fread(&head, 1, sizeof(head), package.get()) < sizeof(head)) {
        return 0;
    }
    const owned_memory<pack_node> nodes = read_node_table(package.get(), sizeof(head), head.count);
    if (nodes == nullptr) {
        return 0;
    }
    show_header(&head);
    show_nodes(&head, nodes.get());
    return 1;
}

int show_package_info_new(const char *packpath) {
    if (packpath == nullptr) {
        return 0;
    }
    debug(5, "packpath=%s\n", packpath);
    const owned_file package = open_package(packpath);
    if (package == nullptr) {
        return 0;
    }
    debug(5, "FLG1\n");
    pack_head_new head = {};
    if (fread(&head, 1, pack_head_new_size, package.get()) == 0) {
        return 0;
    }
    debug(5, "FLG2\n");
    const bool has_text = read_version_text(package.get(), &head);
    const owned_memory<char> version(head.version_content);
    if (!has_text) {
        return 0;
    }
    debug(5, "version_content!!:%s\n", version.get());
    debug(5, "FLG4\n");
    debug(5, "count=%d\n", as_int(head.count));
    const owned_memory<pack_node> nodes =
        read_node_table(package.get(), node_table_offset(head.head_len), head.count);
    if (nodes == nullptr) {
        return 0;
    }
    show_header_new(&head);
    show_nodes_new(&head, nodes.get());
    return 1;
}

} // namespace renewer
