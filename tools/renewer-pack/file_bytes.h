#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

// Bytes of files, as the commands look at them.
namespace pack {

// Ends the command with the system's reason (errno) and the path.
[[noreturn]] void fail(const std::filesystem::path &path);

// Opens a file for reading; a directory or a FIFO is none. Throws std::system_error.
std::ifstream open_file(const std::filesystem::path &path);

// Reads up to `size` bytes at `offset`; as many as there are.
std::string bytes_at(std::ifstream &file, uint64_t offset, uint64_t size);

bool all_zero(const std::string &bytes);

// Two hexadecimal characters for each byte.
std::string hexadecimal_bytes(const uint8_t *bytes, size_t count);

} // namespace pack
