#include "commands.h"

#include "file_bytes.h"
#include "package_json.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <md5.h>

namespace pack {

namespace {

constexpr uint64_t chunk_size = 1024 * 1024;

// What is compared of a node; its place in the package is not.
struct content {
    uint64_t size = 0;
    std::string md5;

    bool operator==(const content &) const = default;
};
using contents = std::map<uint32_t, content>; // by type

// The MD5 digest of a payload, up to the end of the file.
std::string digest_of(std::ifstream &file, const renewer::pack_node &node) {
    MD5_CTX context;
    MD5Init(&context);
    for (uint64_t done = 0; done < node.size; done += chunk_size) {
        const std::string bytes =
            bytes_at(file, node.offset + done, std::min(chunk_size, node.size - done));
        MD5Update(&context, reinterpret_cast<const uint8_t *>(bytes.data()), bytes.size());
    }
    uint8_t digest[renewer::md5_size];
    MD5Final(digest, &context);
    return hexadecimal_bytes(digest, sizeof(digest));
}

contents contents_of(const package_file &package) {
    std::ifstream file = open_file(package.path);
    contents nodes;
    for (const renewer::pack_node &node : package.nodes) {
        nodes[node.type] = {node.size,
                            digest_of(file, node)}; // of two nodes of one type the later one counts
    }
    return nodes;
}

json differing_fields(const package_file &a, const package_file &b) {
    const json first = header_of(a);
    const json second = header_of(b);
    json fields = json::array();
    for (const auto &[name, value] : first.items()) {
        const json other = second.value(name, json(nullptr));
        if (other != value) {
            fields.push_back({{"field", name}, {"a", value}, {"b", other}});
        }
    }
    for (const auto &[name, value] : second.items()) {
        if (!first.contains(name)) {
            fields.push_back({{"field", name}, {"a", nullptr}, {"b", value}});
        }
    }
    return fields;
}

json document_of(const contents &nodes, uint32_t type) {
    const auto found = nodes.find(type);
    if (found == nodes.end()) {
        return nullptr;
    }
    return {{"size", found->second.size}, {"md5", found->second.md5}};
}

json differing_nodes(const contents &a, const contents &b) {
    contents all = a;
    all.insert(b.begin(), b.end());
    json nodes = json::array();
    for (const auto &[type, one] : all) {
        const json first = document_of(a, type);
        const json second = document_of(b, type);
        if (first != second) {
            nodes.push_back(
                {{"type", type}, {"name", type_name(type)}, {"a", first}, {"b", second}});
        }
    }
    return nodes;
}

std::string value_text(const json &value) {
    if (value.is_null()) {
        return "nothing";
    }
    return printable(value.is_string() ? value.get<std::string>() : value.dump());
}

std::string node_text(const json &node) {
    if (node.is_null()) {
        return "nothing";
    }
    return std::to_string(node["size"].get<uint64_t>()) + " bytes, md5 " +
           node["md5"].get<std::string>();
}

} // namespace

int diff(const diff_options &options) {
    const package_file a = named_package(options.first);
    const package_file b = named_package(options.second);
    const json fields = differing_fields(a, b);
    const json nodes = differing_nodes(contents_of(a), contents_of(b));
    const int status = fields.empty() && nodes.empty() ? good : package_refused;
    if (options.as_json) {
        return print_document("diff", status, {{"fields", fields}, {"nodes", nodes}});
    }
    for (const json &field : fields) {
        printf("%s: %s -> %s\n", field["field"].get<std::string>().c_str(),
               value_text(field["a"]).c_str(), value_text(field["b"]).c_str());
    }
    for (const json &node : nodes) {
        printf("node %s: %s -> %s\n", node["name"].get<std::string>().c_str(),
               node_text(node["a"]).c_str(), node_text(node["b"]).c_str());
    }
    return status;
}

} // namespace pack
