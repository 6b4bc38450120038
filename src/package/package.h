#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The update package: one file that carries a header, a table of nodes and the nodes' payloads.
// Two layouts live side by side, the old one with a fixed header of packed integers and the new
// one with text fields and a version text behind it. All integers are little-endian, the unit's
// own order, and records are read and written as raw images. In both layouts bytes 4 to 19 hold
// the MD5 digest (RFC 1321) of everything from byte 20 to the end of the file.
namespace renewer {

constexpr uint32_t magic_old = 0x77007700;   // the old layout
constexpr uint32_t magic_new_1 = 0x77007701; // accepted as new layout, never written
constexpr uint32_t magic_new = 0x77007703;   // the new layout as written
constexpr size_t md5_size = 16;              // bytes of a digest
constexpr uint32_t md5_range_begin = 20;     // first byte of the file that the digest covers

// Header of the old layout, the first 60 bytes of the file. The node table follows it.
struct pack_head {
    uint32_t magic;
    uint8_t md5[md5_size];
    uint32_t
        version;    // bits 16-23 main, 8-15 sub, 0-7 revision; 24-31 are neither shown nor compared
    uint8_t pn[16]; // part-number digits of 4 bits, two to a byte
    uint32_t pnlen; // digits held in `pn`, at most 32
    uint32_t date;  // bits 9-31 year, 5-8 month, 0-4 day
    uint32_t time;  // bits 13-18 hour, 6-11 minute, 0-4 second
    uint32_t flag;
    uint32_t count; // node records
};
static_assert(sizeof(pack_head) == 60);
static_assert(offsetof(pack_head, md5) == 4);
static_assert(offsetof(pack_head, version) == 20);
static_assert(offsetof(pack_head, pn) == 24);
static_assert(offsetof(pack_head, pnlen) == 40);
static_assert(offsetof(pack_head, date) == 44);
static_assert(offsetof(pack_head, time) == 48);
static_assert(offsetof(pack_head, flag) == 52);
static_assert(offsetof(pack_head, count) == 56);

// Bytes of a new-layout header in the file, before the version text.
constexpr size_t pack_head_new_size = 100;

// Header of the new layout: the first 100 bytes of the file, and a pointer to the version text
// that follows them there. The texts are terminated in a sound package only. `flag` is not at a
// multiple of its width; take its value, never its address.
struct pack_head_new {
    uint32_t magic;
    uint8_t md5[md5_size];
    uint32_t head_len;     // 100 + version_len
    uint32_t head_version; // 1
    uint32_t pnlen;        // characters of `pn`
    char pn[20];
    uint32_t version_len;                           // of the version text with its terminator
    char git_version[9];                            // source revision
    char date[11];                                  // "20240523"
    char time[12];                                  // "09.05.01"
    uint32_t count;                                 // node records
    [[gnu::packed, gnu::aligned(4)]] uint64_t flag; // presence mask, see `node_type_flag`
    char *version_content; // see `get_pack_head_new`; null when it has not been read
};
static_assert(offsetof(pack_head_new, md5) == 4);
static_assert(offsetof(pack_head_new, head_len) == 20);
static_assert(offsetof(pack_head_new, head_version) == 24);
static_assert(offsetof(pack_head_new, pnlen) == 28);
static_assert(offsetof(pack_head_new, pn) == 32);
static_assert(offsetof(pack_head_new, version_len) == 52);
static_assert(offsetof(pack_head_new, git_version) == 56);
static_assert(offsetof(pack_head_new, date) == 65);
static_assert(offsetof(pack_head_new, time) == 76);
static_assert(offsetof(pack_head_new, count) == 88);
static_assert(offsetof(pack_head_new, flag) == 92);
static_assert(offsetof(pack_head_new, version_content) >= pack_head_new_size);

// One payload of a package, in both layouts.
struct pack_node {
    uint32_t type;   // index into `node_type_strs`
    uint32_t offset; // of the payload from the start of the file
    uint32_t size;   // of the payload in bytes, without padding
};
static_assert(sizeof(pack_node) == 12);
static_assert(offsetof(pack_node, offset) == 4);
static_assert(offsetof(pack_node, size) == 8);

// Names of the node types. They also name the extracted files.
extern const std::array<const char *, 66> node_type_strs;

// Gives the name of a node type; the empty text for a type outside the table, never null.
const char *node_type_to_str(int type);

// Gives the bit of `type` in the `flag` of a new-layout header; 0 for a type that carries no file
// (0, 29 and those outside the table).
uint64_t node_type_flag(int type);

// Reads an old-layout header into `out`. The magic is not checked.
//
// Returns 1 when all 60 bytes were read; 0 otherwise, and for a null `path` or `out`.
int get_pack_head(const char *path, pack_head *out);

// Reads a new-layout header into `out`, which the caller has zeroed: a file of 1 to 99 bytes fills
// what it holds. The magic is not checked. `version_content` is set to a heap buffer with the
// version text, cut at the end of the file (and at 64 KiB) when `version_len` claims more, and
// always terminated. The caller frees it, also when the reading failed.
//
// Returns 1 when the header and at least one byte of the version text were read; 0 otherwise, and
// for a null `packpath` or `out`.
int get_pack_head_new(const char *packpath, pack_head_new *out);

// Print an old-layout header, and the `head->count` records of its node table, on standard output.
// Nothing is printed for a null argument.
void show_header(const pack_head *head);
void show_nodes(const pack_head *head, const pack_node *nodes);

// The same for the new layout. Text fields are printed to their terminator or to the end of their
// field, the version text to its terminator or to `version_len` bytes; a null version text prints
// as an empty one.
void show_header_new(const pack_head_new *head);
void show_nodes_new(const pack_head_new *head, const pack_node *nodes);

// Read and print header and node table of an old-layout (`show_package_info`) or new-layout
// package (`show_package_info_new`), whatever its magic. A table that the file does not hold is
// reported as "ret( %d ) <  nodes( %d )\n", with the bytes that are there and the bytes wanted.
//
// Return 1 when both were printed, 0 when the package could not be read.
int show_package_info(const char *path);
int show_package_info_new(const char *packpath);

// Reads the first four bytes of a file into `out` and prints "ret=%d\n" with the number of bytes
// that there were. A file that cannot be opened, or whose path has 128 bytes or more, is reported
// on standard error with the prefix "fopen".
//
// Returns 1 when the file was opened, also when it is shorter; 0 otherwise, and for a null
// argument.
int get_magic(const char *path, void *out);

// Returns 1 for every type.
int is_package_type(unsigned type);

} // namespace renewer
