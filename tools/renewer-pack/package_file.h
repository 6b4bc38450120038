#pragma once

#include "package/package.h"
#include "words.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// A package for people who make and test packages: all of its content and all of its defects.
namespace pack {

// Ends a command with exit status 1: something is wrong with the package.
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
    std::vector<renewer::pack_node> nodes; // as many as the file holds
    bool table_is_cut = false;             // the file does not hold all records
    std::vector<std::string> defects;      // the first ones; empty if the structure is sound
    size_t more_defects = 0;               // number of those that are not kept
    bool is_damaged = false;               // a defect prevents unpacking
};

constexpr size_t most_defects = 20; // that are kept

// Adds a defect. `hinders` is false for parts that no reader uses, which do not prevent unpacking.
void add_defect(package_file &package, const std::string &text, bool hinders = true);

// Reads header and node table. Whatever is wrong with them is added to `defects`.
//
// Throws `refused` if the file is not a package at all, std::system_error if it cannot be read.
package_file read_package(const std::filesystem::path &path);

// The same; the refusal names the path.
package_file named_package(const std::filesystem::path &path);

// Adds defects of the nodes: past the end of the file, overlapping, without a name, not matching
// the flag, with padding that is not zero.
void examine_nodes(package_file &package);

// A package and all its defects.
struct examination {
    package_file package;
    std::string digest; // of the content, 32 hexadecimal characters; empty if it is not a package
    std::vector<std::string> defects; // if more than 20, the first 20 and "and N more"
};

// Reads the whole package and compares its digest with that in the header. If the file is not a
// package, that is its only defect. Throws std::system_error if it cannot be read.
examination examine(const std::filesystem::path &path);

// "old" or "new".
const char *layout_name(const package_file &package);

// Name of the file that a node is extracted to.
std::string file_name(uint32_t type);

// "kernel", or "type 70" for a type without a name.
std::string type_name(uint32_t type);

} // namespace pack
