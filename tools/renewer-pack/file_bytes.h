#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

// Reading bytes of files.
namespace pack {

// Throws std::system_error with errno and the path.
[[noreturn]] void fail(const std::filesystem::path &path);

// Opens a file for reading. Throws std::system_error, also for a directory or a FIFO.
std::ifstream open_file(const std::filesystem::path &path);

// Reads `size` bytes at `offset`, or fewer if the file ends before.
std::string bytes_at(std::ifstream &file, uint64_t offset, uint64_t size);

bool all_zero(const std::string &bytes);

// Two hexadecimal characters for each byte.
std::string hexadecimal_bytes(const uint8_t *bytes, size_t count);

} // namespace pack
