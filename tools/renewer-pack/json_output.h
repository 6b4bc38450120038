#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>

// The commands' output for programs: one JSON document each, described by renewer-pack.schema.json.
namespace pack {

using json = nlohmann::ordered_json;

// Prints the members of `document` after those that all documents have. Returns `status`.
int print_document(const char *command, int status, const json &document);

// A path as a string of the document; bytes that are not UTF-8 become U+FFFD when it is printed.
inline std::string name_of(const std::filesystem::path &path) {
    return path.string();
}

} // namespace pack
