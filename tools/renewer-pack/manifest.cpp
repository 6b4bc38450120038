#include "manifest.h"

#include "commands.h"
#include "package/package.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <fstream>
#include <system_error>

namespace pack {

namespace {

using nlohmann::json;

unsigned type_with_file(const std::string &name) {
    const std::optional<unsigned> type = node_type_of(name);
    if (!type || *type >= renewer::node_type_strs.size()) {
        throw misused("there is no node type \"" + name + "\" (see renewer-pack types)");
    }
    if (renewer::node_type_flag(static_cast<int>(*type)) == 0) {
        throw misused("node type \"" + name + "\" carries no file");
    }
    return *type;
}

void put_source(const std::string &type, const std::filesystem::path &file,
                package_description &description) {
    if (!description.sources.emplace(type_with_file(type), file).second) {
        throw misused("node type \"" + type + "\" is given twice");
    }
}

json parse(const std::filesystem::path &path) {
    std::ifstream file(path);
    if (!file) {
        throw std::system_error(errno, std::generic_category(), path.string());
    }
    try {
        return json::parse(file);
    } catch (const json::exception &error) {
        throw misused(path.string() + " is not JSON: " + error.what());
    }
}

package_description description_of(const json &manifest, const std::filesystem::path &directory) {
    package_description description;
    for (const auto &[name, value] : manifest.items()) {
        if (name == "version") {
            description.version = value.get<std::string>();
        } else if (name == "pn") {
            description.pn = value.get<std::string>();
        } else if (name == "revision") {
            description.revision = value.get<std::string>();
        } else if (name == "nodes") {
            for (const auto &[type, file] : value.items()) {
                put_source(type, directory / file.get<std::string>(), description);
            }
        } else {
            throw misused("it has a member \"" + name + "\", which means nothing here");
        }
    }
    return description;
}

} // namespace

package_description read_manifest(const std::filesystem::path &path) {
    const json manifest = parse(path);
    try {
        if (!manifest.is_object()) {
            throw misused("it is not an object");
        }
        return description_of(manifest, path.parent_path());
    } catch (const json::exception &) {
        throw misused("manifest " + path.string() +
                      ": version, pn, revision and files are texts, nodes is an object");
    } catch (const misused &reason) {
        throw misused("manifest " + path.string() + ": " + reason.what());
    }
}

void add_source(const std::string &source, package_description &description) {
    const size_t equals = source.find('=');
    if (equals == std::string::npos || equals + 1 == source.size()) {
        throw misused("\"" + source + "\" is not TYPE=FILE");
    }
    put_source(source.substr(0, equals), source.substr(equals + 1), description);
}

} // namespace pack
