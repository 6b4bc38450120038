#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace simulator {

// A new directory that is removed, with its content, at the end of the scope.
class temporary_directory {
public:
    temporary_directory() {
        std::string name = std::filesystem::temp_directory_path() / "renewer-desk.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error(name + ": " + strerror(errno));
        }
        path = name;
    }
    ~temporary_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    temporary_directory(const temporary_directory &) = delete;
    temporary_directory &operator=(const temporary_directory &) = delete;

    std::filesystem::path path;
};

} // namespace simulator
