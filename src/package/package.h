#pragma once

#include "platform/debug.h" // part of this interface

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>

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

// Records of a node table that the readers take at most: a damaged count in a large file must not
// take the unit's memory.
constexpr uint32_t most_node_records = 64 * 1024;

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

// Returns the name of a node type; the empty text for a type outside the table, never null.
const char *node_type_to_str(int type);

// What follows the type's name in the name of the extracted file.
const char *node_file_suffix(uint32_t type);

// The install script is extracted as a file that can be executed.
constexpr uint32_t install_type = 1;
constexpr unsigned install_mode = 0777; // a mode_t

// Returns the bit of `type` in the `flag` of a new-layout header; 0 for a type that carries no file
// (0, 29 and those outside the table).
uint64_t node_type_flag(int type);

// Reads an old-layout header into `out`. The magic is not checked.
//
// Returns 1 when all 60 bytes were read; 0 otherwise, and for a null `path` or `out`.
int get_pack_head(const char *path, pack_head *out);

// Reads a new-layout header into `out`, which the caller has zeroed: a file of 1 to 99 bytes fills
// what it holds. The magic is not checked. `version_content` is set to a heap buffer with the
// version text: `version_len` bytes, but 64 KiB at the most, zero after what the file has, and
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
// field, the version text to its terminator; a null version text prints as an empty one.
void show_header_new(const pack_head_new *head);
void show_nodes_new(const pack_head_new *head, const pack_node *nodes);

// Read and print header and node table of an old-layout (`show_package_info`) or new-layout
// package (`show_package_info_new`), whatever its magic. A table that the file does not hold is
// reported as "ret( %d ) <  nodes( %d )\n", with the bytes that are there and the bytes wanted.
//
// Return 1 when both were printed, 0 when the package could not be read and, in silence, when its
// table has more than `most_node_records`.
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

// Check that a package carries the right magic and a digest that matches its content:
// `validate_package` the old layout (magic 77007700), `validate_package_new` the new one (magic
// 77007700, 77007701 or 77007703). Memory does not grow with the size of the package.
//
// Return 1 for a sound package; 0 otherwise, with one line of what is wrong: "path error!\n" (null
// path), "open fail!\n", "size differently!\n" (old layout, short header) or " Get header error!\n"
// (new layout, also for a file that does not open), "header error!\n" (magic), "read fail!\n" (the
// medium fails), "md5 error!\n".
int validate_package(const char *path);
int validate_package_new(const char *path);

// Extract every node of an old-layout (`unpack_package`) or new-layout package into a file named
// after its type, with the suffix ".sh" for type 1, which gets mode 0777, and ".bin" for the
// others. The files land in `out_dir`, which is made by "mkdir -p", or in the current directory
// when it is null. Prints "outpath : %s\n" and the node's line of `show_nodes` for each. Neither
// magic nor digest is checked; of a node that runs past the end of the package the file is shorter.
// A node whose file is the package itself is left out; this, and a file that could not be written,
// is reported at debug level 1.
//
// Return 1 when every node was processed, whether or not its file could be written; 0 with nothing
// written when header, version text or node table cannot be read (what is missing is reported at
// debug level 1), when the table has more than `most_node_records` and when the path of a node
// would have 256 bytes or more.
int unpack_package(const char *path, const char *out_dir);
int unpack_package_new(const char *path, const char *out_dir);

// Copies the payload of `node` from the package `in` into a new file, up to the end of the package
// when it has less. Moves the position of `in`.
//
// Returns 1 when the file was written; 0 for a null argument (`in` null leaves an empty file), when
// the file cannot be created or written or the package cannot be read, and, with the package left
// as it is, when both are the same file.
int node_to_file(FILE *in, const pack_node *node, const char *outpath);

// What a package is made of.
struct package_plan {
    int version[4];          // main, sub, revision, type; at most 14 characters as a text
    const char *git_version; // source revision, at most 8 characters
    const char *pn;          // part number, at most 19 characters
    struct tm made;          // when it is made, for the fields `date` and `time`
    std::array<const char *, node_type_strs.size()> sources; // by node type; null leaves one out
};

// Writes a new-layout package with the nodes of `plan` in ascending type order; types that carry
// no file are left out. Prints its version, its header length and its digest. A text that does not
// fit its field is refused before the file is created; a later failure leaves an incomplete file,
// which `validate_package_new` refuses. Sources are read as they stand at the time: one that is
// missing or too large is reported as "Error path invalid : %s\n", one that is empty or changes
// its size in the meantime fails in silence. So does a package that would be one of its sources,
// which is left as it is.
//
// Returns 1 when the package was written completely, 0 otherwise.
int write_package(const package_plan &plan, const char *packpath);

// Does the same with one argument for each node type, at the present local time.
int gen_package(
    int iMainVersion, int iSubVersion, int iReversion, int itypeVersion, const char *git_version,
    const char *pn, const char *install, const char *uboot, const char *kernel, const char *rootfs,
    const char *gnss_board_1, const char *gnss_board_2, const char *gnss_board_3,
    const char *gnss_board_4, const char *radio_1, const char *radio_2, const char *packpath,
    const char *qspi, const char *dtb, const char *app, const char *gnss_board_5,
    const char *gnss_board_6, const char *gnss_board_7, const char *gnss_board_8,
    const char *gnss_board_9, const char *gnss_board_10, const char *gnss_board_11,
    const char *gnss_board_12, const char *gnss_board_13, const char *gnss_board_14,
    const char *gnss_board_15, const char *radio_3, const char *radio_4, const char *dtb1,
    const char *dtb2, const char *update_info, const char *renewer, const char *pn_menu,
    const char *md5_file, const char *member33, const char *member34, const char *member35,
    const char *member36, const char *member37, const char *member38, const char *member39,
    const char *member40, const char *member41, const char *member42, const char *member43,
    const char *member44, const char *member45, const char *member46, const char *member47,
    const char *member48, const char *member49, const char *member50, const char *member51,
    const char *member52, const char *member53, const char *member54, const char *member55,
    const char *member56, const char *member57, const char *member58, const char *member59,
    const char *member60, const char *member61, const char *member62, const char *member63,
    const char *member64);

// Adds `path` to the tables `nodes` and `paths` at the index `*count`, which it advances, as a node
// of `type`, and `flag_bits` to the flag of `head`. A null `path` adds nothing.
//
// Returns 1, or 0 when the file is missing or empty.
int register_file(pack_head_new *head, pack_node *nodes, const char *path, const char **paths,
                  uint64_t flag_bits, int type, int *count);

// Returns the size of a file in bytes; 0 for a null path. A path that cannot be examined, a
// directory and a file of 4 GiB or more return 0 and print "Error path invalid : %s\n".
uint32_t get_file_size(const char *path);

// Appends the content of the file at `path` to `stream`, which must be another file.
//
// Returns 1 when all was read and handed to the stream, 0 otherwise.
int copy_to_stream(const char *path, FILE *stream);

} // namespace renewer
