#include "commands.h"

#include "discovery/package_candidate.h"
#include "file_bytes.h"
#include "package/package.h"
#include "package_file.h"
#include "platform/owner.h"
#include "unit/host_info.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <unistd.h>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr size_t longest_path = 255;
const std::vector<fs::path> unit_directories = {"/media/sda1", "/firmware", "/mnt"};

struct candidate_verdict {
    enum { passed_over, fits, ends_search } kind;
    std::string why;
};

struct best_candidate {
    fs::path path;
    uint32_t version = 0;
};

renewer::host_info read_unit(const fs::path &path) {
    std::ifstream file = open_file(path);
    renewer::host_info host = {};
    file.read(reinterpret_cast<char *>(&host), sizeof(host));
    if (file.gcount() == 0) {
        errno = ENODATA;
        fail(path);
    }
    return host;
}

std::string without_line_end(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.front() == ' ')) {
        text.back() == '\n' ? text.pop_back() : static_cast<void>(text.erase(0, 1));
    }
    return text;
}

std::string digits_of(const renewer::pack_head &head) {
    std::string digits;
    for (unsigned i = 0; i < 14; ++i) {
        digits += "0123456789abcdef"[renewer::pn_digit(head, i)];
    }
    return digits;
}

std::string version_text(uint32_t version) {
    return std::to_string(version >> 16 & 255) + "." + std::to_string(version >> 8 & 255) + "." +
           std::to_string(version & 255);
}

// Without known inputs the version is left to the unit.
candidate_verdict judge_hardware(const renewer::pack_head &head, const std::string &inputs) {
    if (inputs == "000" && !renewer::is_fit_for_new_hardware(head.version)) {
        return {candidate_verdict::ends_search,
                "version " + version_text(head.version) +
                    " is too old for the unit's hardware, which needs 2.0.16"};
    }
    const bool open_question = inputs.empty() && !renewer::is_fit_for_new_hardware(head.version);
    return {candidate_verdict::fits,
            open_question ? ", if not all presence inputs of the unit read 0" : ""};
}

candidate_verdict judge_candidate(const fs::path &path, const renewer::host_info &host,
                                  const std::string &inputs, uint32_t *version) {
    if (!renewer::is_package_name(path.filename().c_str())) {
        return {candidate_verdict::passed_over, "the name is not that of a package"};
    }
    if (path.native().size() > longest_path) {
        return {candidate_verdict::passed_over, "the path is longer than 255 characters"};
    }
    renewer::pack_head head = {};
    if (renewer::get_pack_head(path.c_str(), &head) == 0) {
        return {candidate_verdict::passed_over, "no header of 60 bytes can be read"};
    }
    if (head.magic != renewer::magic_old) {
        return {candidate_verdict::passed_over, "the magic is " + hexadecimal(head.magic)};
    }
    *version = head.version;
    candidate_verdict hardware = {candidate_verdict::fits, ""};
    if (renewer::needs_hardware_check(head, host)) {
        hardware = judge_hardware(head, inputs);
    }
    if (hardware.kind != candidate_verdict::fits) {
        return hardware;
    }
    const renewer::candidate_fit fit = renewer::judge_part_number(head, host);
    if (!fit.fits) {
        return {candidate_verdict::ends_search,
                without_line_end(fit.note) + " (digits of the package: " + digits_of(head) + ")"};
    }
    return {candidate_verdict::fits, "fits, version " + version_text(head.version) + hardware.why};
}

void tell(const fs::path &path, const std::string &what) {
    printf("%s: %s\n", printable(path.string()).c_str(), what.c_str());
}

// Keeps a later version, as the unit does; bits 24 to 31 are not compared.
void weigh(const fs::path &path, uint32_t version, const std::string &why, best_candidate &best) {
    if (renewer::cmp_version(version, best.version) > 0) {
        tell(path, why + ", the latest so far");
        best = {path, version};
    } else {
        tell(path, why + ", passed over: not later than " + version_text(best.version));
    }
}

// Looks in the order in which the directory lists its entries, as the unit does.
best_candidate search(const fs::path &directory, const renewer::host_info &host,
                      const std::string &inputs) {
    const renewer::owned_directory entries(
        access(directory.c_str(), R_OK | W_OK) == 0 ? opendir(directory.c_str()) : nullptr);
    if (entries == nullptr) {
        tell(directory, "passed over: it cannot be listed, or not be read and written");
        return {};
    }
    best_candidate best;
    while (const dirent *const entry = readdir(entries.get())) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..") {
            continue;
        }
        const fs::path path = directory.native() + "/" + name;
        uint32_t version = 0;
        const candidate_verdict verdict = judge_candidate(path, host, inputs, &version);
        if (verdict.kind == candidate_verdict::ends_search) {
            tell(path, "ends the search of the directory: " + verdict.why);
            return {};
        }
        if (verdict.kind == candidate_verdict::fits) {
            weigh(path, version, verdict.why, best);
        } else {
            tell(path, "passed over: " + verdict.why);
        }
    }
    return best;
}

} // namespace

int find(const find_options &options) {
    const renewer::host_info host = read_unit(options.unit);
    const auto &directories = options.directories.empty() ? unit_directories : options.directories;
    for (const fs::path &directory : directories) {
        const best_candidate best = search(directory, host, options.inputs);
        if (static_cast<int32_t>(best.version) > 0) {
            printf("found: %s\n", printable(best.path.string()).c_str());
            return good;
        }
    }
    printf("found: nothing\n");
    return package_refused;
}

} // namespace pack
