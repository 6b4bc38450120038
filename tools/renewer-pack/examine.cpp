#include "package_file.h"

#include "file_bytes.h"
#include "progress.h"

#include <algorithm>
#include <atomic>
#include <md5.h>
#include <utility>

namespace pack {

namespace {

using renewer::pack_node;

uint64_t end_of(const pack_node &node) {
    return uint64_t{node.offset} + node.size;
}

constexpr size_t most_told = 20;

void cut(std::vector<std::string> &defects) {
    if (defects.size() > most_told) {
        const size_t more = defects.size() - most_told;
        defects.resize(most_told);
        defects.push_back("and " + std::to_string(more) + " more");
    }
}

std::string name_of(const package_file &package, size_t index) {
    return "node " + std::to_string(index) + " (" + type_name(package.nodes[index].type) + ")";
}

// What one node alone can have wrong.
void examine_node(package_file &package, size_t index) {
    const pack_node &node = package.nodes[index];
    const uint64_t table_end = package.table_offset + package.nodes.size() * sizeof(pack_node);
    if (*renewer::node_type_to_str(static_cast<int>(node.type)) == '\0') {
        package.defects.push_back("node " + std::to_string(index) + " has type " +
                                  std::to_string(node.type) + ", which has no name");
    }
    if (end_of(node) > package.size) {
        package.defects.push_back(name_of(package, index) + " ends at " +
                                  std::to_string(end_of(node)) + ", past the end of the file at " +
                                  std::to_string(package.size));
    }
    if (node.size > 0 && node.offset < table_end) {
        package.defects.push_back(name_of(package, index) + " begins at " +
                                  std::to_string(node.offset) + ", before the node table ends at " +
                                  std::to_string(table_end));
    }
}

// Indices of the nodes that hold bytes, by their place in the file.
std::vector<size_t> by_offset(const package_file &package) {
    std::vector<size_t> order;
    for (size_t i = 0; i < package.nodes.size(); ++i) {
        if (package.nodes[i].size > 0) {
            order.push_back(i);
        }
    }
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        return std::pair(package.nodes[a].offset, a) < std::pair(package.nodes[b].offset, b);
    });
    return order;
}

void examine_overlaps(package_file &package, const std::vector<size_t> &order) {
    size_t furthest = 0; // in `order`: the node so far that reaches furthest
    for (size_t i = 1; i < order.size(); ++i) {
        const pack_node &before = package.nodes[order[furthest]];
        const pack_node &node = package.nodes[order[i]];
        if (node.offset < end_of(before)) {
            package.defects.push_back(name_of(package, order[furthest]) + " and " +
                                      name_of(package, order[i]) + " overlap");
        }
        if (end_of(node) > end_of(before)) {
            furthest = i;
        }
    }
}

void examine_flag(package_file &package) {
    uint64_t expected = 0;
    for (const pack_node &node : package.nodes) {
        expected |= renewer::node_type_flag(static_cast<int>(node.type));
    }
    if (package.flag != expected) {
        package.defects.push_back("the flag is " + hexadecimal(package.flag) +
                                  ", the nodes make it " + hexadecimal(expected));
    }
}

// What follows a payload up to the next multiple of 4 is padding, unless it is the next payload.
void examine_padding(package_file &package, const std::vector<size_t> &order) {
    std::ifstream file = open_file(package.path);
    for (size_t i = 0; i < order.size(); ++i) {
        const uint64_t end = end_of(package.nodes[order[i]]);
        const uint64_t next =
            i + 1 < order.size() ? package.nodes[order[i + 1]].offset : package.size;
        const uint64_t padding_end = std::min(align4(end), next);
        if (padding_end > end && !all_zero(bytes_at(file, end, padding_end - end))) {
            package.defects.push_back("the padding behind " + name_of(package, order[i]) +
                                      " is not zero");
        }
    }
}

} // namespace

void examine_nodes(package_file &package) {
    const std::vector<size_t> order = by_offset(package);
    for (size_t i = 0; i < package.nodes.size(); ++i) {
        examine_node(package, i);
    }
    examine_overlaps(package, order);
    if (package.layout == layout_kind::new_layout) {
        examine_flag(package);
        examine_padding(package, order);
    }
}

std::string digest_of(const package_file &package, const std::function<void(uint64_t)> &progress) {
    std::ifstream file = open_file(package.path);
    file.seekg(renewer::md5_range_begin);
    MD5_CTX context;
    MD5Init(&context);
    std::vector<char> buffer(128 * 1024);
    uint64_t done = 0;
    while (file) {
        file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto taken = static_cast<size_t>(file.gcount());
        MD5Update(&context, reinterpret_cast<const uint8_t *>(buffer.data()), taken);
        done += taken;
        if (progress) {
            progress(done);
        }
    }
    if (file.bad()) {
        fail(package.path);
    }
    uint8_t digest[renewer::md5_size];
    MD5Final(digest, &context);
    return hexadecimal_bytes(digest, sizeof(digest));
}

std::vector<std::string> all_defects(const std::filesystem::path &path) {
    package_file package;
    try {
        package = read_package(path);
    } catch (const refused &reason) {
        return {reason.what()};
    }
    examine_nodes(package);
    std::atomic<uint64_t> done = 0;
    std::string digest;
    {
        const progress_bar bar("checking " + path.filename().string(), package.size,
                               [&done] { return done.load(); });
        digest = digest_of(package, [&done](uint64_t bytes) { done = bytes; });
    }
    if (digest != package.md5) {
        package.defects.insert(package.defects.begin(),
                               "the digest is " + digest + ", the header says " + package.md5);
    }
    cut(package.defects);
    return package.defects;
}

} // namespace pack
