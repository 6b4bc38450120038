#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace simulator {

// A directory of the desk that is gone with the run.
class desk_directory {
public:
    desk_directory() {
        std::string name = std::filesystem::temp_directory_path() / "renewer-desk.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error(name + ": " + strerror(errno));
        }
        path = name;
    }
    ~desk_directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    desk_directory(const desk_directory &) = delete;
    desk_directory &operator=(const desk_directory &) = delete;

    std::filesystem::path path;
};

} // namespace simulator
