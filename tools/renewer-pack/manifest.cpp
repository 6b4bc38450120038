#include "manifest.h"

#include "commands.h"
#include "file_bytes.h"
#include "json_output.h"
#include "package/package.h"
#include "words.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <vector>

namespace pack {

namespace {

unsigned type_with_file(const std::string &name) {
    const unsigned type = required_node_type(name);
    if (type >= renewer::node_type_strs.size()) {
        throw usage_error("there is no node type \"" + name + "\" (see renewer-pack types)");
    }
    if (renewer::node_type_flag(static_cast<int>(type)) == 0) {
        throw usage_error("node type \"" + name + "\" carries no file");
    }
    return type;
}

void put_source(const std::string &type, const std::filesystem::path &file,
                package_description &description) {
    if (!description.sources.emplace(type_with_file(type), file).second) {
        throw usage_error("node type \"" + type + "\" is given twice");
    }
}

std::string line_of(const std::string &text, size_t byte) {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(byte, text.size()));
    return std::to_string(1 + std::count(text.begin(), end, '\n'));
}

// The JSON library keeps the last of two members with one name; here that is an error.
json parse_without_doubles(const std::string &text) {
    std::vector<std::set<std::string>> names; // of the objects that enclose this place
    return json::parse(text, [&](int, json::parse_event_t event, const json &parsed) {
        if (event == json::parse_event_t::object_start) {
            names.emplace_back();
        } else if (event == json::parse_event_t::object_end) {
            names.pop_back();
        } else if (event == json::parse_event_t::key &&
                   !names.back().insert(parsed.get<std::string>()).second) {
            throw usage_error("\"" + parsed.get<std::string>() + "\" is given twice");
        }
        return true;
    });
}

json parse(const std::filesystem::path &path) {
    std::ifstream file = open_file(path);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (file.bad()) {
        fail(path);
    }
    try {
        return parse_without_doubles(text);
    } catch (const json::parse_error &error) {
        throw usage_error("it is not JSON, from line " + line_of(text, error.byte) + " on");
    }
}

std::string variable(const std::string &name) {
    const char *const value = name.empty() ? nullptr : getenv(name.c_str());
    if (value == nullptr) {
        throw usage_error("the environment has no variable " + name + " for \"${" + name + "}\"");
    }
    return value;
}

// Replaces variables by their values.
std::string expanded(const std::string &text) {
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        const std::string two = text.substr(i, 2);
        const size_t end = two == "${" ? text.find('}', i) : std::string::npos;
        if (end != std::string::npos) {
            result += variable(text.substr(i + 2, end - i - 2));
            i = end;
        } else {
            result += text[i];
            i += two == "$$" ? 1 : 0;
        }
    }
    return result;
}

// The reverse of `expanded`.
std::string protected_text(const std::string &text) {
    std::string result;
    for (const char c : text) {
        result += c == '$' ? "$$" : std::string(1, c);
    }
    return result;
}

package_description description_of(const json &manifest, const std::filesystem::path &directory) {
    package_description description;
    for (const auto &[name, value] : manifest.items()) {
        if (name == "version") {
            description.version = expanded(value.get<std::string>());
        } else if (name == "pn") {
            description.pn = expanded(value.get<std::string>());
        } else if (name == "revision") {
            description.revision = expanded(value.get<std::string>());
        } else if (name == "nodes") {
            if (!value.is_object()) {
                throw usage_error("\"nodes\" is not an object, like {\"kernel\": \"zImage\"}");
            }
            for (const auto &[type, file] : value.items()) {
                put_source(type, directory / expanded(file.get<std::string>()), description);
            }
        } else {
            throw usage_error("it has a member \"" + name + "\", which means nothing here" +
                              suggestion(name, {"version", "pn", "revision", "nodes"}));
        }
    }
    return description;
}

} // namespace

package_description read_manifest(const std::filesystem::path &path) {
    try {
        const json manifest = parse(path);
        if (!manifest.is_object()) {
            throw usage_error("it is not an object");
        }
        return description_of(manifest, path.parent_path());
    } catch (const json::exception &) {
        throw usage_error("manifest " + path.string() +
                          ": version, pn, revision and files are texts in quotes");
    } catch (const usage_error &reason) {
        throw usage_error("manifest " + path.string() + ": " + reason.what());
    }
}

void print_manifest(const package_description &description) {
    json nodes = json::object();
    for (const auto &[type, path] : description.sources) {
        nodes[renewer::node_type_strs[type]] = protected_text(path.string());
    }
    json manifest = json::object();
    for (const auto &[name, text] :
         {std::pair("version", &description.version), std::pair("pn", &description.pn),
          std::pair("revision", &description.revision)}) {
        if (!text->empty()) {
            manifest[name] = protected_text(*text);
        }
    }
    manifest["nodes"] = nodes;
    printf("%s\n", manifest.dump(2, ' ', false, json::error_handler_t::replace).c_str());
}

void add_source(const std::string &source, package_description &description) {
    const size_t equals = source.find('=');
    if (equals == std::string::npos || equals + 1 == source.size()) {
        throw usage_error("\"" + source + "\" is not TYPE=FILE");
    }
    put_source(source.substr(0, equals), source.substr(equals + 1), description);
}

} // namespace pack
