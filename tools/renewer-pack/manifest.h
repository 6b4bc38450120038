#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace pack {

// What a package is made from.
struct package_description {
    std::string version;
    std::string pn;
    std::string revision;
    std::map<unsigned, std::filesystem::path> sources; // by node type
};

// Reads a manifest:
//
//     {"version": "${VERSION}", "pn": "101356340012", "revision": "1a2b3c4d",
//      "nodes": {"install": "install.sh", "kernel": "../zImage"}}
//
// All members are optional. Paths are relative to the manifest's directory. "${NAME}" is a variable
// of the environment, "$$" a dollar sign.
//
// Throws `usage_error` if it is not such a manifest, std::system_error if it cannot be read.
package_description read_manifest(const std::filesystem::path &path);

// Prints the manifest of a description.
void print_manifest(const package_description &description);

// Adds "TYPE=FILE", with the type as a name or a number. Throws `usage_error` if the type carries
// no file or has one already.
void add_source(const std::string &source, package_description &description);

} // namespace pack
