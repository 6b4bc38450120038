#include "input.h"

#include "package/package.h"

#include <filesystem>
#include <set>
#include <string>
#include <unistd.h>

using namespace renewer;
namespace fs = std::filesystem;

namespace {

std::set<std::string> names_in(const char *directory) {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory)) {
        names.insert(entry.path().filename());
    }
    return names;
}

// Unpacked files are no larger than the package and lie nowhere but in the output directory.
void look_around(size_t size) {
    for (const auto &entry : fs::directory_iterator("/tmp/out")) {
        fuzz::expect(entry.is_regular_file() && entry.file_size() <= size);
        fs::remove(entry.path());
    }
    static const std::set<std::string> usual = names_in("/tmp");
    fuzz::expect(names_in("/tmp") == usual);
}

} // namespace

// Both unpackers, on any file.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size));
    fuzz::expect(chdir("/tmp/out") == 0);
    unpack_package(fuzz::input_path, nullptr);
    unpack_package_new(fuzz::input_path, nullptr);
    look_around(size);
    return 0;
}
