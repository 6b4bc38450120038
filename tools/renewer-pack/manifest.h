#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace pack {

// What a package is to be made of.
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
// Each member may be left out. Paths are relative to the manifest's directory. "${NAME}" is a
// variable of the environment, "$$" a dollar sign.
//
// Throws `misused` for what is no such manifest, std::system_error when it cannot be read.
package_description read_manifest(const std::filesystem::path &path);

// Prints the manifest of a description.
void print_manifest(const package_description &description);

// Adds "TYPE=FILE", with the type as a name or a number. Throws `misused` for a type that carries
// no file or has one already.
void add_source(const std::string &source, package_description &description);

} // namespace pack
