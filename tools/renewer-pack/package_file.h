#pragma once

#include "package/package.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

// A package as people who make and test packages look at it: all that it holds, and all that is
// wrong with it.
namespace pack {

// What ends a command with exit status 1: the package is not what it should be.
struct refused : std::runtime_error {
    using runtime_error::runtime_error;
};

enum class layout_kind { old_layout, new_layout };

struct package_file {
    std::filesystem::path path;
    uint64_t size = 0; // bytes of the file
    layout_kind layout = layout_kind::new_layout;
    uint32_t magic = 0;
    std::string md5; // 32 hexadecimal characters, as stored
    renewer::pack_head old_head = {};
    renewer::pack_head_new new_head = {}; // without `version_content`
    std::string version;                  // "1.1.4.0"; of an old package "1.1.4"
    std::string part_number;
    uint64_t flag = 0;
    uint64_t table_offset = 0;
    std::vector<renewer::pack_node> nodes; // those that the file holds
    std::vector<std::string> defects;      // in words; empty for a sound structure
};

// Reads header and node table. What is not as it should be is told in `defects`.
//
// Throws `refused` for a file that is no package at all, std::system_error when it cannot be read.
package_file read_package(const std::filesystem::path &path);

// Adds to the defects what is wrong with the nodes: past the end, overlapping, without a name, not
// as the flag says, with padding that is not zero.
void examine_nodes(package_file &package);

// Digests the package as its header must have it and gives the 32 hexadecimal characters.
// `progress` is called with the bytes done so far.
std::string digest_of(const package_file &package,
                      const std::function<void(uint64_t)> &progress = {});

// What is wrong with the package, its digest included; empty for a sound one. Of more than 20
// defects the first 20 and "and N more".
std::vector<std::string> all_defects(const std::filesystem::path &path);

// Name of the file that a node is extracted to.
std::string file_name(uint32_t type);

// "kernel", or "type 70" for a type without a name.
std::string type_name(uint32_t type);

// A text field of a header up to its terminator or its end.
std::string text_of(const char *field, size_t size);

// The text with what a terminal would act upon replaced by "?".
std::string printable(std::string text);

std::string hexadecimal(uint64_t value);

} // namespace pack
