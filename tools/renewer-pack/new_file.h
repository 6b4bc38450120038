#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace pack {

// A new file that is written beside its target and put in place when it is complete. Unless that
// has happened, it is removed at the end of the scope or when a signal ends the program.
class new_file {
public:
    // Throws `usage_error` if the target exists and must not be replaced, std::system_error if the
    // file cannot be made.
    new_file(std::filesystem::path target, bool replace);
    ~new_file();
    new_file(const new_file &) = delete;
    new_file &operator=(const new_file &) = delete;

    const std::filesystem::path &temporary() const { return path; }

    // Throws std::system_error.
    void write(std::string_view bytes);

    // Its present size in bytes.
    uint64_t size() const;

    // The offset at which this process reads or writes it, 0 if it is not open.
    uint64_t position() const;

    // Flushes it to the disk and moves it to the target. Throws like the constructor.
    void put_in_place();

private:
    std::filesystem::path target;
    std::filesystem::path path;
    bool replace;
};

// `mode` without the bits of the umask.
mode_t permitted(mode_t mode);

// Throws `usage_error` if the target exists and must not be replaced, or is one of the `inputs`,
// even under another name; std::system_error if it is not a regular file.
void check_target(const std::filesystem::path &target, bool replace,
                  const std::vector<std::filesystem::path> &inputs);

} // namespace pack
