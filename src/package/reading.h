#pragma once

#include "package/package.h"
#include "platform/owner.h"

#include <cstdint>
#include <cstdio>

// The steps that the operations on a package share. Used by the package library only.
namespace renewer {

constexpr uint64_t align4(uint64_t offset) {
    return (offset + 3) & ~uint64_t{3};
}

// Where the node table of a new-layout package begins: behind the version text, its fill and the
// reserved word.
constexpr uint64_t node_table_offset(uint32_t head_len) {
    return align4(head_len) + 4;
}

// Room for the bytes that are copied or digested at once, past the stream's own buffer: large, so
// that a package moves with few system calls; small if there is no memory for that.
class transfer_buffer {
public:
    uint8_t *bytes() { return large != nullptr ? large.get() : small; }
    size_t size() const { return large != nullptr ? large_size : sizeof(small); }

private:
    static constexpr size_t large_size = 128 * 1024;
    owned_memory<uint8_t> large{static_cast<uint8_t *>(malloc(large_size))};
    uint8_t small[4096];
};

// Turns off the buffering of a stream that was just opened: all requests to it are large.
void make_unbuffered(FILE *stream);

// Opens a package for reading, unbuffered; empty for a null path and when it cannot be opened. A
// pipe without a writer opens without waiting for one and has nothing in it; with one it is read to
// its end (see `open_piped`).
owned_file open_package(const char *path);

// Moves to `offset` from the start of the file; false when the stream cannot.
bool seek_to(FILE *package, uint64_t offset);

// Reads the version text that follows the 100 header bytes just read from `package` into
// `head->version_content`, as `get_pack_head_new` says. The caller owns that buffer from then on.
//
// Returns whether at least one byte was read.
bool read_version_text(FILE *package, pack_head_new *head);

// Reads both, as `get_pack_head_new` does.
bool read_head_new(FILE *package, pack_head_new *head);

// Reads the table of `count` records at `offset`. A table that the package does not hold is
// reported (see `show_package_info`), and not allocated where that shows beforehand. More than
// `most_node_records` are refused in silence.
//
// Returns the table, which is not null even if `count` is 0; null on failure.
owned_memory<pack_node> read_node_table(FILE *package, uint64_t offset, uint32_t count);

// Prints one line of a node table, as `show_nodes` does for each record.
void show_node(int index, const pack_node &node);

} // namespace renewer
