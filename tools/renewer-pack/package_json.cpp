#include "package_json.h"

#include <algorithm>
#include <cstdio>

namespace pack {

namespace {

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

// "20240523" as "2024-05-23"; other texts are returned unchanged.
std::string with_separators(const std::string &text, char separator) {
    if (text.size() != 8) {
        return text;
    }
    return text.substr(0, 4) + separator + text.substr(4, 2) + separator + text.substr(6);
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

} // namespace

json header_of(const package_file &package) {
    json header = {{"layout", layout_name(package)},
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

json document_of(const examination &examined) {
    json document = json::object();
    if (!examined.digest.empty()) {
        document = header_of(examined.package);
        document["nodes"] = nodes_of(examined.package);
        document["digest_holds"] = examined.digest == examined.package.md5;
    }
    document["defects"] = examined.defects;
    return document;
}

} // namespace pack
