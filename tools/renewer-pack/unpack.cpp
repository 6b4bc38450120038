#include "commands.h"

#include "package/package.h"
#include "package_file.h"
#include "platform/owner.h"
#include "progress.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <set>
#include <sys/stat.h>
#include <system_error>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr uint32_t install_type = 1;
constexpr mode_t install_mode = 0777;

std::set<unsigned> types_named(const std::vector<std::string> &names) {
    std::set<unsigned> types;
    for (const std::string &name : names) {
        const std::optional<unsigned> type = node_type_of(name);
        if (!type) {
            throw misused("there is no node type \"" + name + "\" (see renewer-pack types)");
        }
        types.insert(*type);
    }
    return types;
}

void refuse_damaged(const fs::path &package, bool force) {
    const std::vector<std::string> defects = all_defects(package);
    for (const std::string &defect : defects) {
        fprintf(stderr, "renewer-pack: %s: %s\n", printable(package.string()).c_str(),
                defect.c_str());
    }
    if (!defects.empty() && !force) {
        throw refused("refused; nothing was unpacked (--force unpacks what is there)");
    }
}

std::vector<renewer::pack_node> chosen_nodes(const package_file &package,
                                             const std::vector<std::string> &only) {
    const std::set<unsigned> types = types_named(only);
    std::vector<renewer::pack_node> nodes;
    std::copy_if(package.nodes.begin(), package.nodes.end(), std::back_inserter(nodes),
                 [&](const renewer::pack_node &node) {
                     return types.empty() || types.count(node.type) != 0;
                 });
    for (const unsigned type : types) {
        if (std::none_of(nodes.begin(), nodes.end(),
                         [type](const renewer::pack_node &node) { return node.type == type; })) {
            throw refused("the package has no node of type " + type_name(type));
        }
    }
    return nodes;
}

void extract(FILE *in, const renewer::pack_node &node, const fs::path &target) {
    errno = 0;
    if (renewer::node_to_file(in, &node, target.c_str()) == 0 ||
        (node.type == install_type && chmod(target.c_str(), install_mode) != 0)) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), target.string());
    }
    const uint64_t size = fs::file_size(target);
    printf("%s  %llu bytes%s\n", target.c_str(), static_cast<unsigned long long>(size),
           size < node.size ? ", cut short" : "");
}

uint64_t size_or_nothing(const fs::path &path) {
    std::error_code error;
    const uintmax_t size = fs::file_size(path, error);
    return error ? 0 : size;
}

} // namespace

int unpack(const unpack_options &options) {
    types_named(options.only);
    refuse_damaged(options.package, options.force);
    const package_file package = read_package(options.package);
    const std::vector<renewer::pack_node> nodes = chosen_nodes(package, options.only);
    const renewer::owned_file in(fopen(options.package.c_str(), "re"));
    if (in == nullptr) {
        throw std::system_error(errno, std::generic_category(), options.package.string());
    }
    fs::create_directories(options.directory);
    for (const renewer::pack_node &node : nodes) {
        const fs::path target = options.directory / file_name(node.type);
        const progress_bar bar("unpacking " + file_name(node.type), node.size,
                               [&target] { return size_or_nothing(target); });
        extract(in.get(), node, target);
    }
    return good;
}

} // namespace pack
