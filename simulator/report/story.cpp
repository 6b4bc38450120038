#include "simulator/report/story.h"

#include <array>
#include <cstdint>
#include <sha256.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

std::string digest_of(const fs::path &file) {
    std::array<char, SHA256_DIGEST_STRING_LENGTH> text = {};
    return SHA256File(file.c_str(), text.data()) == nullptr ? "unreadable" : text.data();
}

} // namespace

std::map<std::string, file_state> files_of(const fs::path &tree) {
    std::map<std::string, file_state> files;
    for (const char *storage : {"data", "firmware", "media", "mnt", "reserve", "tmp", "update"}) {
        for (const auto &entry : fs::recursive_directory_iterator(tree / storage)) {
            const std::string path = "/" + entry.path().lexically_relative(tree).string();
            if (entry.is_symlink()) {
                files[path] = {0, "-> " + fs::read_symlink(entry.path()).string()};
            } else if (entry.is_regular_file()) {
                files[path] = {entry.file_size(), digest_of(entry.path())};
            }
        }
    }
    return files;
}

} // namespace simulator
