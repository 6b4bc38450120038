#include "input.h"

#include "discovery/get_valid_package.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string>

using namespace renewer;
namespace fs = std::filesystem;

namespace {

constexpr const char *directory = "/media/sda1";
constexpr size_t longest_name = 60;

// Takes the next `size` bytes of the input, or what is left of it.
std::string_view take(std::string_view *input, size_t size) {
    const std::string_view taken = input->substr(0, size);
    input->remove_prefix(taken.size());
    return taken;
}

// Converts input bytes to a valid file name.
std::string name_of(std::string_view bytes) {
    std::string name = "update_" + std::string(bytes);
    std::replace(name.begin(), name.end(), '/', '_');
    std::replace(name.begin(), name.end(), '\0', '_');
    return name;
}

} // namespace

// The search, on a unit with two candidates. The input is a host record, the name of one candidate
// and the contents of both.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    std::string_view input = fuzz::text_of(data, size);
    host_info host = {};
    const std::string_view record = take(&input, sizeof(host));
    record.copy(reinterpret_cast<char *>(&host), sizeof(host));
    const std::string first = std::string(directory) + "/update_abc_b20240523.bin";
    const std::string second = std::string(directory) + "/" + name_of(take(&input, longest_name));
    fuzz::put_input(take(&input, sizeof(pack_head)), first.c_str());
    fuzz::put_input(input, second.c_str());
    for (const char *name : {"7Pin_Detect", "Batter_A_Detect", "Batter_B_Detect"}) {
        const fs::path file = fs::path("/sys/class/misc/gpio-misc") / name / "value";
        if (!fs::exists(file)) {
            fs::create_directories(file.parent_path());
            fuzz::put_input("0", file.c_str());
        }
    }

    char path[512] = "";
    const int found = find_valid_package(directory, &host, path, sizeof(path));
    fuzz::expect(found == 0 || path == first || path == second);
    fs::remove(first);
    fs::remove(second);
    return 0;
}
