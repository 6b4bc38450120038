#pragma once

#include "package/package.h"
#include "words.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
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
    bool table_is_cut = false;             // the file does not hold all its nodes
    std::vector<std::string> defects;      // the first of them; empty for a sound structure
    size_t more_defects = 0;               // those that are not kept
    bool is_damaged = false;               // a defect hinders unpacking
};

constexpr size_t most_defects = 20; // that are kept

// Adds a defect. What no reader looks at does not hinder unpacking.
void add_defect(package_file &package, const std::string &text, bool hinders = true);

// Reads header and node table. What is not as it should be is told in `defects`.
//
// Throws `refused` for a file that is no package at all, std::system_error when it cannot be read.
package_file read_package(const std::filesystem::path &path);

// The same; the refusal names the path.
package_file named_package(const std::filesystem::path &path);

// Adds to the defects what is wrong with the nodes: past the end, overlapping, without a name, not
// as the flag says, with padding that is not zero.
void examine_nodes(package_file &package);

// A package with all that is wrong with it.
struct examination {
    package_file package;
    std::string digest; // that of its content, 32 hexadecimal characters; empty for no package
    std::vector<std::string> defects; // of more than 20 the first 20 and "and N more"
};

// Reads the whole package and compares its digest with that of its header. A file that is no
// package at all has that as its only defect. Throws std::system_error when it cannot be read.
examination examine(const std::filesystem::path &path);

// "old" or "new".
const char *layout_name(const package_file &package);

// Name of the file that a node is extracted to.
std::string file_name(uint32_t type);

// "kernel", or "type 70" for a type without a name.
std::string type_name(uint32_t type);

} // namespace pack
