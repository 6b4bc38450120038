#include "commands.h"

#include "file_bytes.h"
#include "new_file.h"
#include "package/package.h"
#include "package_file.h"
#include "platform/files.h"
#include "progress.h"
#include "signed.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <set>
#include <sys/stat.h>
#include <system_error>

namespace pack {

namespace {

namespace fs = std::filesystem;

std::set<unsigned> types_named(const std::vector<std::string> &names) {
    std::set<unsigned> types;
    for (const std::string &name : names) {
        types.insert(required_node_type(name));
    }
    return types;
}

void say(const fs::path &package, const std::string &what) {
    fprintf(stderr, "renewer-pack: %s: %s\n", printable(package.string()).c_str(),
            printable(what).c_str());
}

// Reports the package's defects. Returns whether it is damaged; without --force a damaged package
// is refused.
bool check_damage(const examination &examined, bool force) {
    for (const std::string &defect : examined.defects) {
        say(examined.package.path, defect);
    }
    if (examined.package.is_damaged && !force) {
        throw refused("refused; nothing was unpacked (--force unpacks what is there)");
    }
    return examined.package.is_damaged;
}

void demand_signature(const unpack_options &options) {
    if (options.key.empty()) {
        return;
    }
    const signature_result signed_by = check_signature_of(options.package, options.key);
    if (!signed_by.holds) {
        throw refused(options.package.string() + ": " + signed_by.reason +
                      "; nothing was unpacked");
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
        (node.type == renewer::install_type &&
         chmod(path, permitted(renewer::install_mode)) != 0)) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(), target.string());
    }
}

void extract(FILE *in, const renewer::pack_node &node, const unpack_options &options) {
    const fs::path target = options.directory / file_name(node.type);
    new_file file(target, options.force);
    copy(in, node, file, target);
    const uint64_t size = file.size();
    file.put_in_place();
    if (!options.quiet) {
        printf("%s  %llu bytes%s\n", printable(target.string()).c_str(),
               static_cast<unsigned long long>(size), size < node.size ? ", cut short" : "");
    }
}

} // namespace

int unpack(const unpack_options &options) {
    types_named(options.only);
    if (options.quiet) {
        hide_progress();
    }
    const renewer::owned_file in = renewer::open_for_reading(options.package.c_str());
    if (in == nullptr) {
        fail(options.package);
    }
    demand_signature(options);
    const examination examined = examine(options.package);
    const bool is_damaged = check_damage(examined, options.force);
    const std::vector<renewer::pack_node> nodes = chosen_nodes(examined.package, options.only);
    for (const renewer::pack_node &node : nodes) {
        check_target(options.directory / file_name(node.type), options.force, {options.package});
    }
    if (!renewer::is_open_file(options.package.c_str(), in.get())) {
        throw refused(options.package.string() + " was replaced while it was checked");
    }
    fs::create_directories(options.directory);
    for (const renewer::pack_node &node : nodes) {
        extract(in.get(), node, options);
    }
    return is_damaged ? package_refused : good;
}

} // namespace pack
