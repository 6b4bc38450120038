#pragma once

#include "platform/owner.h"

namespace renewer {

// Opens a file for reading as a buffered stream; empty, with the reason in errno, for a null path
// and when it cannot be opened. Never waits: a pipe without a writer opens and has nothing in it.
owned_file open_for_reading(const char *path);

} // namespace renewer
