#pragma once

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <unistd.h>
#include <utility>

// Owners of what the system hands out. Each releases what it holds on leaving the scope; nowhere
// else in the program is anything released by hand, except where an operation's own contract
// hands a buffer over.
namespace renewer {

template <auto release>
struct released_by {
    template <typename T>
    void operator()(T *held) const {
        release(held);
    }
};

// A buffered stream (fopen); empty when it could not be opened.
using owned_file = std::unique_ptr<FILE, released_by<fclose>>;

// A directory being listed (opendir).
using owned_directory = std::unique_ptr<DIR, released_by<closedir>>;

// Memory from malloc, calloc or realloc; empty when there was none.
template <typename T>
using owned_memory = std::unique_ptr<T, released_by<free>>;

// A file descriptor; -1 when there is none.
class owned_descriptor {
public:
    explicit owned_descriptor(int descriptor = -1) : held(descriptor) {}
    owned_descriptor(owned_descriptor &&other) noexcept : held(std::exchange(other.held, -1)) {}
    owned_descriptor(const owned_descriptor &) = delete;
    owned_descriptor &operator=(const owned_descriptor &) = delete;
    owned_descriptor &operator=(owned_descriptor &&) = delete;
    ~owned_descriptor() {
        if (held >= 0) {
            close(held);
        }
    }

    int get() const { return held; }
    explicit operator bool() const { return held >= 0; }

    // Hands the descriptor over to the caller, who closes it.
    int release() { return std::exchange(held, -1); }

    // Closes the descriptor before the end of the scope, and holds another one or none.
    void reset(int descriptor = -1) { owned_descriptor(std::exchange(held, descriptor)); }

private:
    int held;
};

} // namespace renewer
