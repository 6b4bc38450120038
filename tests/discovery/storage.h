#pragma once

#include "discovery/get_valid_package.h"
#include "tests/package/sample.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"

#include <filesystem>
#include <string>

// Storage with packages, and the search of it.
namespace storage {

constexpr const char *directory = "/media/sda1";
constexpr uint32_t version_1_2_3 = 0x010203;

inline renewer::host_info unit_with(const std::string &pn) {
    renewer::host_info host = {};
    pn.copy(host.pn, sizeof(host.pn));
    return host;
}

// PN digits of a package, one a hexadecimal character each, as their bytes.
inline std::string packed(const std::string &digits) {
    std::string bytes;
    for (size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

inline void put_package(const std::filesystem::path &path, const std::string &digits,
                        uint32_t version = version_1_2_3) {
    put_file(path, sample::old_header{.version = version, .pn = packed(digits)}.bytes());
}

// A host package for a unit whose PN is 1013..., and one for units 1016....
inline const std::string host_1013 = "10135604001204";
inline const std::string host_1016 = "10160000000004";

struct search {
    int result = -1;
    std::string path;
    std::string lines;
};

inline search search_in(const std::string &dir, const renewer::host_info &host) {
    search done;
    char out[512] = "untouched";
    done.lines =
        printed([&] { done.result = renewer::find_valid_package(dir.c_str(), &host, out, 512); });
    done.path = out;
    return done;
}

} // namespace storage
