#include "simulator/unit/package.h"

#include "simulator/unit/description.h"
#include "simulator/unit/parts.h"
#include "simulator/unit/pipe_pair.h"
#include "simulator/unit/unit.h"

#include <array>
#include <cstdint>
#include <cstring>
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

constexpr size_t head_len_offset = 20; // length of header and version text, 32 bits, little-endian

void pack(const std::vector<std::string> &arguments) {
    if (run_pack(arguments).status != 0) {
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

pack_result run_pack(const std::vector<std::string> &arguments) {
    const std::string program = part("tools/renewer-pack/renewer-pack");
    std::vector<char *> line = {const_cast<char *>(program.c_str())};
    for (const std::string &argument : arguments) {
        line.push_back(const_cast<char *>(argument.c_str()));
    }
    line.push_back(nullptr);
    pipe_pair output;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.write_end.get(), STDOUT_FILENO);
    pid_t tool = 0;
    const int started = posix_spawn(&tool, line[0], &actions, nullptr, line.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    output.write_end.reset();
    pack_result result;
    std::array<char, 4096> bytes;
    for (ssize_t size;
         started == 0 && (size = read(output.read_end.get(), bytes.data(), bytes.size())) > 0;) {
        result.output.append(bytes.data(), static_cast<size_t>(size));
    }
    int status = 0;
    if (started != 0 || waitpid(tool, &status, 0) != tool || !WIFEXITED(status)) {
        throw std::runtime_error("renewer-pack cannot be run");
    }
    result.status = WEXITSTATUS(status);
    return result;
}

void make_package(const fs::path &file, std::string_view pn, std::string_view install_script) {
    const fs::path script = file.string() + ".install.sh";
    std::ofstream(script, std::ios::binary) << install_script;
    pack({"create", "-o", file, "--version", "1.1.4.0", "--pn", std::string(pn), "--revision",
          "1a2b3c4d", "install=" + script.string(), "renewer=" + part(updater_place).string()});
    fs::remove(script);
}

void take_package(const fs::path &file, const fs::path &root, bool with_header) {
    const fs::path unpacked = below(root, "/firmware/update");
    fs::remove_all(unpacked);
    pack({"unpack", file, "-C", unpacked});
    if (with_header) {
        std::ofstream(below(root, "/data/app/log/pack_tmp"), std::ios::binary) << header_of(file);
    }
}

unit &unit::package(const fs::path &file, bool with_header) {
    plan->tree_changes.push_back(
        [file, with_header](const fs::path &root) { take_package(file, root, with_header); });
    return *this;
}

unit &unit::unpacked_package(const fs::path &directory) {
    plan->tree_changes.push_back([directory](const fs::path &root) {
        const fs::path unpacked = below(root, "/firmware/update");
        fs::remove_all(unpacked);
        fs::copy(directory, unpacked,
                 fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    });
    return *this;
}

} // namespace simulator
