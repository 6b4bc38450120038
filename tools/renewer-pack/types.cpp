#include "commands.h"

#include "json_output.h"
#include "package/package.h"
#include "package_file.h"

#include <charconv>
#include <cstdio>

namespace pack {

namespace {

// Position of the only bit of a flag.
int bit_of(uint64_t flag) {
    return __builtin_ctzll(flag);
}

void print_row(unsigned type, uint64_t flag) {
    const char *const name = renewer::node_type_strs[type];
    if (flag == 0) {
        printf("%4u  %8s  %-13s  (in the header)\n", type, "none", name);
    } else {
        printf("%4u  %8d  %-13s  %s\n", type, bit_of(flag), name, file_name(type).c_str());
    }
}

} // namespace

std::optional<unsigned> node_type_of(const std::string &name) {
    if (name.empty()) {
        return std::nullopt;
    }
    const auto &names = renewer::node_type_strs;
    for (unsigned type = 1; type < names.size(); ++type) {
        if (name == names[type]) {
            return type;
        }
    }
    unsigned number = 0;
    const char *const end = name.data() + name.size();
    const auto [parsed, error] = std::from_chars(name.data(), end, number);
    return error == std::errc() && parsed == end ? std::optional(number) : std::nullopt;
}

unsigned required_node_type(const std::string &name) {
    const std::optional<unsigned> type = node_type_of(name);
    if (!type) {
        const auto &names = renewer::node_type_strs;
        throw usage_error("there is no node type \"" + name + "\"" +
                          suggestion(name, {names.begin() + 1, names.end()}) +
                          " (see renewer-pack types)");
    }
    return *type;
}

int types(const types_options &options) {
    json rows = json::array();
    if (!options.as_json) {
        printf("type  flag bit  name           file\n");
    }
    for (unsigned type = 1; type < renewer::node_type_strs.size(); ++type) {
        const uint64_t flag = renewer::node_type_flag(static_cast<int>(type));
        if (!options.as_json) {
            print_row(type, flag);
            continue;
        }
        rows.push_back({{"type", type},
                        {"name", renewer::node_type_strs[type]},
                        {"bit", flag == 0 ? json(nullptr) : json(bit_of(flag))},
                        {"file", flag == 0 ? json(nullptr) : json(file_name(type))}});
    }
    return options.as_json ? print_document("types", good, {{"types", rows}}) : good;
}

} // namespace pack
