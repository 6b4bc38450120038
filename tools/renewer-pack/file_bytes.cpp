#include "file_bytes.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace pack {

void fail(const std::filesystem::path &path) {
    throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), path.string());
}

std::ifstream open_file(const std::filesystem::path &path) {
    errno = 0;
    if (std::filesystem::is_directory(path)) {
        errno = EISDIR;
        fail(path);
    }
    // Opening a FIFO waits for a writer, and it is not seekable.
    if (std::filesystem::is_fifo(path)) {
        errno = ESPIPE;
        fail(path);
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        fail(path);
    }
    return file;
}

std::string bytes_at(std::ifstream &file, uint64_t offset, uint64_t size) {
    std::string bytes(size, '\0');
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(bytes.data(), static_cast<std::streamsize>(size));
    bytes.resize(static_cast<size_t>(file.gcount()));
    return bytes;
}

bool all_zero(const std::string &bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte == '\0'; });
}

std::string hexadecimal_bytes(const uint8_t *bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += "0123456789abcdef"[bytes[i] >> 4];
        text += "0123456789abcdef"[bytes[i] & 15];
    }
    return text;
}

} // namespace pack
