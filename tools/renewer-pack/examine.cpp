#include "package_file.h"

#include "file_bytes.h"
#include "package/digest.h"
#include "package/reading.h"
#include "progress.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <unistd.h>
#include <utility>

namespace pack {

namespace {

using renewer::pack_node;

uint64_t end_of(const pack_node &node) {
    return uint64_t{node.offset} + node.size;
}

std::string name_of(const package_file &package, size_t index) {
    return "node " + std::to_string(index) + " (" + type_name(package.nodes[index].type) + ")";
}

// Defects of a single node.
void examine_node(package_file &package, size_t index) {
    const pack_node &node = package.nodes[index];
    const uint64_t table_end = package.table_offset + package.nodes.size() * sizeof(pack_node);
    if (*renewer::node_type_to_str(static_cast<int>(node.type)) == '\0') {
        add_defect(package, "node " + std::to_string(index) + " has type " +
                                std::to_string(node.type) + ", which has no name");
    }
    if (end_of(node) > package.size) {
        add_defect(package, name_of(package, index) + " ends at " + std::to_string(end_of(node)) +
                                ", past the end of the file at " + std::to_string(package.size));
    }
    if (node.size > 0 && node.offset < table_end) {
        add_defect(package, name_of(package, index) + " begins at " + std::to_string(node.offset) +
                                ", before the node table ends at " + std::to_string(table_end));
    }
}

// Indices of the nodes that have a payload, sorted by offset.
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
    size_t furthest = 0; // index in `order` of the node that reaches furthest so far
    for (size_t i = 1; i < order.size(); ++i) {
        const pack_node &before = package.nodes[order[furthest]];
        const pack_node &node = package.nodes[order[i]];
        if (node.offset < end_of(before)) {
            add_defect(package, name_of(package, order[furthest]) + " and " +
                                    name_of(package, order[i]) + " overlap");
        }
        if (end_of(node) > end_of(before)) {
            furthest = i;
        }
    }
}

// The later of two nodes of one type replaces the file of the earlier one.
void examine_doubles(package_file &package) {
    std::map<uint32_t, size_t> first; // by type
    for (size_t i = 0; i < package.nodes.size(); ++i) {
        const auto [known, is_new] = first.emplace(package.nodes[i].type, i);
        if (!is_new) {
            add_defect(package, name_of(package, i) + " has the type of node " +
                                    std::to_string(known->second) + ", whose file it replaces");
        }
    }
}

void examine_flag(package_file &package) {
    if (package.table_is_cut) {
        return; // the types of the missing nodes are unknown
    }
    uint64_t expected = 0;
    for (const pack_node &node : package.nodes) {
        expected |= renewer::node_type_flag(static_cast<int>(node.type));
    }
    if (package.flag != expected) {
        add_defect(package, "the flag is " + hexadecimal(package.flag) + ", the nodes make it " +
                                hexadecimal(expected));
    }
}

// The bytes between a payload and the next multiple of 4 are padding, unless the next payload
// begins there.
void examine_padding(package_file &package, const std::vector<size_t> &order) {
    std::ifstream file = open_file(package.path);
    for (size_t i = 0; i < order.size(); ++i) {
        const uint64_t end = end_of(package.nodes[order[i]]);
        const uint64_t next =
            i + 1 < order.size() ? package.nodes[order[i + 1]].offset : package.size;
        const uint64_t padding_end = std::min(renewer::align4(end), next);
        if (padding_end > end && !all_zero(bytes_at(file, end, padding_end - end))) {
            add_defect(package,
                       "the padding behind " + name_of(package, order[i]) + " is not zero");
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
    examine_doubles(package);
    if (package.layout == layout_kind::new_layout) {
        examine_flag(package);
        examine_padding(package, order);
    }
}

namespace {

// The digest that the header must have.
std::string digest_of(const package_file &package) {
    const renewer::owned_file file = renewer::open_package(package.path.c_str());
    if (file == nullptr) {
        fail(package.path);
    }
    const int descriptor = fileno(file.get());
    errno = 0;
    const progress_bar bar("checking " + package.path.filename().string(), package.size,
                           [descriptor] {
                               const off_t done = lseek(descriptor, 0, SEEK_CUR);
                               return static_cast<uint64_t>(std::max<off_t>(done, 0));
                           });
    const renewer::package_digest digest = renewer::digest_package(file.get());
    if (!digest.complete) {
        fail(package.path);
    }
    return hexadecimal_bytes(digest.bytes, sizeof(digest.bytes));
}

std::vector<std::string> defect_texts(const package_file &package) {
    std::vector<std::string> texts = package.defects;
    const size_t kept = std::min(texts.size(), most_defects);
    const size_t more = texts.size() - kept + package.more_defects;
    texts.resize(kept);
    if (more > 0) {
        texts.push_back("and " + std::to_string(more) + " more");
    }
    return texts;
}

} // namespace

examination examine(const std::filesystem::path &path) {
    examination result;
    package_file &package = result.package;
    try {
        package = read_package(path);
    } catch (const refused &reason) {
        package.path = path;
        package.is_damaged = true;
        result.defects = {reason.what()};
        return result;
    }
    examine_nodes(package);
    result.digest = digest_of(package);
    if (result.digest != package.md5) {
        package.defects.insert(package.defects.begin(), "the digest is " + result.digest +
                                                            ", the header says " + package.md5);
        package.is_damaged = true;
    }
    result.defects = defect_texts(package);
    return result;
}

} // namespace pack
