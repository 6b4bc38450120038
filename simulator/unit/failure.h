#pragma once

#include <cerrno>
#include <string>
#include <system_error>

namespace simulator {

// Throws std::system_error with errno and `what`.
[[noreturn]] inline void fail(const std::string &what) {
    throw std::system_error(errno, std::generic_category(), what);
}

} // namespace simulator
