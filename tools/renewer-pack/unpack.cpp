#include "commands.h"

#include "new_file.h"
#include "package/package.h"
#include "package_file.h"
#include "platform/owner.h"
#include "progress.h"

#include <algorithm>
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
            const std::string name = renewer::node_type_to_str(static_cast<int>(type));
            throw refused("the package has no node of type " +
                          (name.empty() ? std::to_string(type) : name));
        }
    }
    return nodes;
}

void copy(FILE *in, const renewer::pack_node &node, const new_file &file, const fs::path &target) {
    const progress_bar bar("unpacking " + target.filename().string(), node.size,
                           [&file] { return file.size(); });
    const char *const path = file.temporary().c_str();
    errno = 0;
    if (renewer::node_to_file(in, &node, path) == 0 ||
        (node.type == install_type && chmod(path, install_mode) != 0)) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), target.string());
    }
}

void extract(FILE *in, const renewer::pack_node &node, const fs::path &target) {
    new_file file(target);
    copy(in, node, file, target);
    const uint64_t size = file.size();
    file.put_in_place();
    printf("%s  %llu bytes%s\n", target.c_str(), static_cast<unsigned long long>(size),
           size < node.size ? ", cut short" : "");
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
        extract(in.get(), node, options.directory / file_name(node.type));
    }
    return good;
}

} // namespace pack
