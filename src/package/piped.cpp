#include "package/piped.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <sys/types.h>

namespace renewer {

namespace {

// A pipe that is read once, with its first bytes kept for seeking back. The next byte to return is
// either a kept one or the next one from the pipe.
struct piped_input {
    int descriptor;
    uint64_t position;       // of the next byte to return
    uint64_t taken;          // bytes read from the pipe
    uint8_t kept[66 * 1024]; // the first of them: header and longest version text

    uint64_t kept_bytes() const { return std::min<uint64_t>(taken, sizeof(kept)); }
};

piped_input &input_of(void *cookie) {
    return *static_cast<piped_input *>(cookie);
}

ssize_t take(piped_input &input, char *to, size_t size) {
    const ssize_t count = read(input.descriptor, to, size);
    if (count <= 0) {
        return count;
    }
    if (input.taken < sizeof(input.kept)) {
        const size_t room = sizeof(input.kept) - static_cast<size_t>(input.taken);
        memcpy(input.kept + input.taken, to, std::min(room, static_cast<size_t>(count)));
    }
    input.taken += static_cast<uint64_t>(count);
    input.position = input.taken;
    return count;
}

ssize_t read_piped(void *cookie, char *to, size_t size) {
    piped_input &input = input_of(cookie);
    if (input.position == input.taken) {
        return take(input, to, size);
    }
    const size_t count = std::min(size, static_cast<size_t>(input.kept_bytes() - input.position));
    if (count == 0) {
        errno = ESPIPE;
        return -1;
    }
    memcpy(to, input.kept + input.position, count);
    input.position += count;
    return static_cast<ssize_t>(count);
}

// Reads on up to `target` or to the end, whichever comes first.
int skip_to(piped_input &input, uint64_t target) {
    char skipped[4096];
    input.position = input.taken;
    while (input.taken < target) {
        const uint64_t missing = target - input.taken;
        const ssize_t count =
            take(input, skipped, static_cast<size_t>(std::min<uint64_t>(sizeof(skipped), missing)));
        if (count <= 0) {
            return static_cast<int>(count);
        }
    }
    return 0;
}

// fopencookie(3).
int seek_piped(void *cookie, off64_t *offset, int whence) {
    piped_input &input = input_of(cookie);
    const uint64_t base = whence == SEEK_CUR ? input.position : 0;
    const uint64_t target = base + static_cast<uint64_t>(*offset);
    if (whence == SEEK_END || (target >= input.kept_bytes() && target < input.taken)) {
        errno = ESPIPE;
        return -1;
    }
    if (target >= input.taken && skip_to(input, target) != 0) {
        return -1;
    }
    input.position = std::min(target, input.taken);
    *offset = static_cast<off64_t>(target);
    return 0;
}

int close_piped(void *cookie) {
    const int result = close(input_of(cookie).descriptor);
    free(cookie);
    return result;
}

} // namespace

owned_file open_piped(owned_descriptor input) {
    owned_memory<piped_input> piped(static_cast<piped_input *>(calloc(1, sizeof(piped_input))));
    if (piped == nullptr) {
        return nullptr;
    }
    piped->descriptor = input.get();
    const cookie_io_functions_t functions = {
        .read = read_piped, .write = nullptr, .seek = seek_piped, .close = close_piped};
    owned_file stream(fopencookie(piped.get(), "r", functions));
    if (stream != nullptr) {
        piped.release();
        input.release();
    }
    return stream;
}

} // namespace renewer
