#pragma once

#include <cstdint>
#include <filesystem>

namespace pack {

// A file in the making, beside the place where it is to be: nobody sees it there before it is
// complete. Removed with the end of the scope and when a signal ends the program, unless it has
// been put in place.
class new_file {
public:
    // Throws std::system_error when it cannot be made.
    explicit new_file(std::filesystem::path target);
    ~new_file();
    new_file(const new_file &) = delete;
    new_file &operator=(const new_file &) = delete;

    const std::filesystem::path &temporary() const { return path; }

    // Bytes that it has now.
    uint64_t size() const;

    // Where this process reads or writes it, 0 when it is not open.
    uint64_t position() const;

    // Brings it to the disk and in place of what may be there. Throws std::system_error.
    void put_in_place();

private:
    std::filesystem::path target;
    std::filesystem::path path;
};

} // namespace pack
