#include "commands.h"

#include "bytes_view.h"
#include "package/package.h"
#include "package_json.h"

#include <cstdio>

namespace pack {

namespace {

int show_json(const std::filesystem::path &path) {
    const examination examined = examine(path);
    if (examined.digest.empty()) {
        throw refused(path.string() + ": " + examined.defects.front());
    }
    return print_document("show", examined.defects.empty() ? good : package_refused,
                          document_of(examined));
}

} // namespace

int show(const show_options &options) {
    if (options.as_json) {
        return show_json(options.package);
    }
    const package_file package = named_package(options.package);
    if (options.as_bytes) {
        print_bytes(package);
        return package.defects.empty() ? good : package_refused;
    }
    const int shown = package.layout == layout_kind::old_layout
                          ? renewer::show_package_info(options.package.c_str())
                          : renewer::show_package_info_new(options.package.c_str());
    if (shown == 0) {
        throw refused(options.package.string() + ": " +
                      (package.defects.empty() ? "cannot be shown" : package.defects.front()));
    }
    return good;
}

} // namespace pack
