#pragma once

#include "platform/owner.h"

// Files that have to be whole whatever happens while they are replaced, a power cut included.
namespace renewer {

// Whether `path` is a regular file with exactly the bytes of `source`, an open file. Read back from
// the medium where it was flushed before. False also when either cannot be read.
bool holds_same(const char *path, int source);

// Replaces `path` by a copy of `source`, an open file: written beside it as "<path>.new", flushed
// to the medium, renamed over it, and the directory flushed. Until the rename `path` stays as it
// is, after it it is the whole copy; a program that runs from `path` goes on. The mode is the one
// that `path` had, otherwise that of `source`.
//
// False, with `path` as it was and nothing beside it, when there is no room or the medium fails.
bool replace_file(const char *path, int source);

// Removes what an interrupted `replace_file` has left beside `path`.
void remove_unfinished(const char *path);

// A copy of a file in memory, with its mode; empty when there is none or it cannot be made.
owned_descriptor copy_in_memory(const char *path);

// Flushes the file system that holds `path` to its medium.
void flush_file_system(const char *path);

} // namespace renewer
