#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>

// What the commands print for programs: one JSON document each, as renewer-pack.schema.json
// describes them.
namespace pack {

using json = nlohmann::ordered_json;

// Prints the members of `document` behind those that all documents have, and returns `status`.
int print_document(const char *command, int status, const json &document);

// A path as a text of the document; bytes that are no UTF-8 become U+FFFD when it is printed.
inline std::string name_of(const std::filesystem::path &path) {
    return path.string();
}

} // namespace pack
