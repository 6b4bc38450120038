#include "simulator/unit/package.h"

#include "simulator/unit/description.h"
#include "simulator/unit/unit.h"

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace simulator {

namespace fs = std::filesystem;

namespace {

constexpr size_t head_len_offset = 20; // header and version text, a 32-bit little-endian number

// Runs renewer-pack; what it says on standard output is not heard.
void pack(const std::vector<std::string> &arguments) {
    std::vector<char *> line = {const_cast<char *>(SIMULATOR_PACK)};
    for (const std::string &argument : arguments) {
        line.push_back(const_cast<char *>(argument.c_str()));
    }
    line.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t tool = 0;
    const int started = posix_spawn(&tool, SIMULATOR_PACK, &actions, nullptr, line.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (started != 0 || waitpid(tool, &status, 0) != tool || status != 0) {
        throw std::runtime_error("renewer-pack " + arguments.at(0) + " failed");
    }
}

std::string header_of(const fs::path &file) {
    std::ifstream package(file, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(package), {});
    uint32_t head_len = 0;
    memcpy(&head_len, bytes.data() + head_len_offset, sizeof(head_len));
    return bytes.substr(0, head_len);
}

} // namespace

void make_package(const fs::path &file, std::string_view pn, std::string_view install_script) {
    const fs::path script = file.string() + ".install.sh";
    std::ofstream(script, std::ios::binary) << install_script;
    pack({"create", "-o", file, "--version", "1.1.4.0", "--pn", std::string(pn), "--revision",
          "1a2b3c4d", "install=" + script.string(), "renewer=" SIMULATOR_PROGRAM});
    fs::remove(script);
}

void take_package(const fs::path &file, const fs::path &root) {
    const fs::path unpacked = below(root, "/firmware/update");
    fs::remove_all(unpacked);
    pack({"unpack", file, "-C", unpacked});
    std::ofstream(below(root, "/data/app/log/pack_tmp"), std::ios::binary) << header_of(file);
}

unit &unit::package(const fs::path &file) {
    plan->tree_changes.push_back([file](const fs::path &root) { take_package(file, root); });
    return *this;
}

} // namespace simulator
