#pragma once

#include <climits>
#include <cstddef>

// Lets memory run out: the first `allocations_left` calls of malloc in the project's libraries
// succeed. For one source file of a test that is linked with -Wl,--wrap=malloc.
inline int allocations_left = INT_MAX;

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
    return allocations_left-- > 0 ? __real_malloc(size) : nullptr;
}
