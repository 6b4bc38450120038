#pragma once

#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

// Lets a medium fail: the first `reads_that_work` calls of fread in the project's libraries
// succeed; then the stream is replaced by a directory, which cannot be read. For one source file of
// a test that is linked with -Wl,--wrap=fread.
inline int reads_that_work = INT_MAX;

extern "C" size_t __real_fread(void *to, size_t size, size_t count, FILE *stream);
extern "C" size_t __wrap_fread(void *to, size_t size, size_t count, FILE *stream) {
    if (reads_that_work-- <= 0) {
        const int directory = open("/", O_RDONLY | O_CLOEXEC);
        dup2(directory, fileno(stream));
        close(directory);
    }
    return __real_fread(to, size, count, stream);
}
