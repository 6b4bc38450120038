#include "input.h"

#include "package/package.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <unistd.h>

using namespace renewer;
namespace fs = std::filesystem;

namespace {

constexpr const char *package_path = "/tmp/round_trip.bin";
constexpr const char *out_path = "/tmp/out";

std::string content_of(const fs::path &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string next_byte(std::string_view &left) {
    const std::string byte(left.substr(0, 1));
    left.remove_prefix(byte.size());
    return byte.empty() ? std::string(1, '\0') : byte;
}

unsigned next_number(std::string_view &left) {
    return static_cast<unsigned char>(next_byte(left)[0]);
}

// A node: its type, its length, its content.
std::map<unsigned, std::string> nodes_of(std::string_view left) {
    std::map<unsigned, std::string> nodes;
    while (left.size() > 2) {
        const unsigned type = next_number(left) % node_type_strs.size();
        const unsigned length = next_number(left);
        if (node_type_flag(static_cast<int>(type)) != 0) {
            nodes[type] = std::string(left.substr(0, length)) + "!"; // never empty
        }
        left.remove_prefix(std::min<size_t>(length, left.size()));
    }
    return nodes;
}

} // namespace

// Unpacking returns exactly what was packed.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view left = fuzz::text_of(data, size);
    package_plan plan = {};
    for (int &number : plan.version) {
        number = static_cast<int>(next_number(left) % 100); // the text has room for 14 characters
    }
    plan.git_version = "1a2b3c4d";
    plan.pn = "101356340012";
    plan.made.tm_mday = 1;
    const std::map<unsigned, std::string> nodes = nodes_of(left);
    std::map<unsigned, std::string> sources;
    for (const auto &[type, content] : nodes) {
        sources[type] = "/tmp/source" + std::to_string(type);
        fuzz::put_input(content, sources[type].c_str());
        plan.sources[type] = sources[type].c_str();
    }
    fuzz::expect(write_package(plan, package_path) == 1 &&
                 validate_package_new(package_path) == 1 && chdir(out_path) == 0 &&
                 unpack_package_new(package_path, nullptr) == 1);
    for (const auto &[type, content] : nodes) {
        const fs::path file =
            fs::path(out_path) / (std::string(node_type_strs[type]) + node_file_suffix(type));
        fuzz::expect(content_of(file) == content);
        fs::remove(file);
        fs::remove(sources[type]);
    }
    fuzz::expect(fs::is_empty(out_path));
    return 0;
}
