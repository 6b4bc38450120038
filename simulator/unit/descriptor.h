#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <unistd.h>

namespace simulator {

// Throws std::system_error with what errno says.
[[noreturn]] inline void fail(const std::string &what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// A descriptor of the desk's, closed on leaving the scope. -1 is none.
class descriptor {
public:
    explicit descriptor(int opened = -1) : held(opened) {}
    descriptor(const descriptor &) = delete;
    descriptor &operator=(const descriptor &) = delete;
    ~descriptor() { close_now(); }

    int get() const { return held; }
    void close_now() {
        if (held >= 0) {
            close(held);
        }
        held = -1;
    }

private:
    int held;
};

} // namespace simulator
