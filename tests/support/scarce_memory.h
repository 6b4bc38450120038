#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>

// Lets memory run out: the first `allocations_left` calls of malloc in the project's libraries
// succeed. Records the largest request. For one source file of a test that is linked with
// -Wl,--wrap=malloc.
inline int allocations_left = INT_MAX;
inline size_t largest_allocation = 0;

extern "C" void *__real_malloc(size_t size);
extern "C" void *__wrap_malloc(size_t size) {
    largest_allocation = std::max(largest_allocation, size);
    return allocations_left-- > 0 ? __real_malloc(size) : nullptr;
}
