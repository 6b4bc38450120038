#include "commands.h"

#include "package/package.h"
#include "package_file.h"

#include <nlohmann/json.hpp>

#include <cstdio>

namespace pack {

namespace {

using json = nlohmann::ordered_json;

std::string old_date(uint32_t date) {
    char text[32];
    snprintf(text, sizeof(text), "%04u-%02u-%02u", date >> 9, date >> 5 & 15, date & 31);
    return text;
}

std::string old_time(uint32_t time) {
    char text[32];
    snprintf(text, sizeof(text), "%02u:%02u:%02u", time >> 13 & 63, time >> 6 & 63, time & 31);
    return text;
}

// "20240523" as "2024-05-23"; a text that is no such date as it stands.
std::string with_separators(const std::string &text, char separator) {
    if (text.size() != 8) {
        return text;
    }
    return text.substr(0, 4) + separator + text.substr(4, 2) + separator + text.substr(6);
}

json header_of(const package_file &package) {
    json header = {{"layout", package.layout == layout_kind::old_layout ? "old" : "new"},
                   {"magic", hexadecimal(package.magic)},
                   {"md5", package.md5},
                   {"version", package.version},
                   {"pn", package.part_number}};
    if (package.layout == layout_kind::old_layout) {
        header["date"] = old_date(package.old_head.date);
        header["time"] = old_time(package.old_head.time);
        header["count"] = package.old_head.count;
    } else {
        const renewer::pack_head_new &head = package.new_head;
        std::string time = text_of(head.time, sizeof(head.time));
        std::replace(time.begin(), time.end(), '.', ':');
        header["revision"] = text_of(head.git_version, sizeof(head.git_version));
        header["date"] = with_separators(text_of(head.date, sizeof(head.date)), '-');
        header["time"] = time;
        header["head_len"] = head.head_len;
        header["head_version"] = head.head_version;
        header["count"] = head.count;
    }
    header["flag"] = hexadecimal(package.flag);
    return header;
}

json nodes_of(const package_file &package) {
    json nodes = json::array();
    for (const renewer::pack_node &node : package.nodes) {
        nodes.push_back({{"type", node.type},
                         {"name", renewer::node_type_to_str(static_cast<int>(node.type))},
                         {"file", file_name(node.type)},
                         {"offset", node.offset},
                         {"size", node.size}});
    }
    return nodes;
}

void show_json(const package_file &package) {
    json document = header_of(package);
    document["nodes"] = nodes_of(package);
    document["defects"] = package.defects;
    printf("%s\n", document.dump(2, ' ', false, json::error_handler_t::replace).c_str());
}

package_file package_at(const std::filesystem::path &path) {
    try {
        return read_package(path);
    } catch (const refused &reason) {
        throw refused(path.string() + ": " + reason.what());
    }
}

} // namespace

int show(const show_options &options) {
    const package_file package = package_at(options.package);
    if (options.json) {
        show_json(package);
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
