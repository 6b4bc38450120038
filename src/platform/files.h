#pragma once

#include "platform/owner.h"

#include <sys/stat.h>

namespace renewer {

// Opens a file for reading; empty, with the reason in errno, for a null path and when it cannot be
// opened. Never waits: a pipe without a writer opens and has nothing in it. Reading does not wait
// either.
owned_descriptor open_without_waiting(const char *path);

// Makes a buffered stream of a descriptor, which it then owns (fdopen). Empty, with the descriptor
// closed, when that fails and for no descriptor.
owned_file stream_of(owned_descriptor descriptor, const char *mode);

// Opens a file for reading as a buffered stream, as `open_without_waiting` does.
owned_file open_for_reading(const char *path);

// Whether the file at `path` is the one that `about` describes (stat(2)), by whatever name.
bool is_file(const char *path, const struct stat &about);

// Whether it is the one that a stream reads or writes.
bool is_open_file(const char *path, FILE *stream);

} // namespace renewer
