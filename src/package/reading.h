#pragma once

#include "package/package.h"
#include "platform/owner.h"

#include <cstdint>
#include <cstdio>

// The steps that the operations on a package share. For the package library alone.
namespace renewer {

constexpr uint64_t align4(uint64_t offset) {
    return (offset + 3) & ~uint64_t{3};
}

// Where the node table of a new-layout package begins: behind the version text, its fill and the
// reserved word.
constexpr uint64_t node_table_offset(uint32_t head_len) {
    return align4(head_len) + 4;
}

// Bytes that are read or copied at once, past the stream's own buffer, so that a package moves with
// few system calls and without a second copy.
constexpr size_t read_ahead_size = 128 * 1024;

// Makes a system call of each request to a stream just opened: its requests are large.
void take_whole_requests(FILE *stream);

// Opens a package for reading; empty for a null path and when it cannot be opened. Never waits: a
// pipe without a writer opens and has nothing in it.
owned_file open_package(const char *path);

// Moves to `offset` from the start of the file; false when the stream cannot.
bool seek_to(FILE *package, uint64_t offset);

// Reads the version text that follows the 100 header bytes just read from `package` into
// `head->version_content`, as `get_pack_head_new` says. The caller owns that buffer from then on.
//
// Returns whether at least one byte was read.
bool read_version_text(FILE *package, pack_head_new *head);

// Reads the table of `count` records at `offset`. A table that the file does not hold is reported
// (see `show_package_info`) and not allocated. More than `most_node_records` are refused in
// silence.
//
// Returns the table, which is never empty of room when `count` is 0; nothing on failure.
owned_memory<pack_node> read_node_table(FILE *package, uint64_t offset, uint32_t count);

// Prints one line of a node table, as `show_nodes` does for each record.
void show_node(int index, const pack_node &node);

} // namespace renewer
