#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace pack {

// A file in the making, beside the place where it is to be: nobody sees it there before it is
// complete. Removed with the end of the scope and when a signal ends the program, unless it has
// been put in place.
class new_file {
public:
    // Throws `misused` when the target exists and must not be replaced, std::system_error when the
    // file cannot be made.
    new_file(std::filesystem::path target, bool replace);
    ~new_file();
    new_file(const new_file &) = delete;
    new_file &operator=(const new_file &) = delete;

    const std::filesystem::path &temporary() const { return path; }

    // Throws std::system_error.
    void write(std::string_view bytes);

    // Bytes that it has now.
    uint64_t size() const;

    // Where this process reads or writes it, 0 when it is not open.
    uint64_t position() const;

    // Brings it to the disk and in place of what may be there. Throws as the constructor does.
    void put_in_place();

private:
    std::filesystem::path target;
    std::filesystem::path path;
    bool replace;
};

// Permissions of a new file that `mode` asks for, less the umask.
mode_t permitted(mode_t mode);

// Throws `misused` when the target exists and must not be replaced, or is one of the `inputs`, also
// under another name, and std::system_error when something else than a file is in its place.
void check_target(const std::filesystem::path &target, bool replace,
                  const std::vector<std::filesystem::path> &inputs);

} // namespace pack
