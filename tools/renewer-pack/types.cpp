#include "commands.h"

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

int types() {
    printf("type  flag bit  name           file\n");
    for (unsigned type = 1; type < renewer::node_type_strs.size(); ++type) {
        const uint64_t flag = renewer::node_type_flag(static_cast<int>(type));
        if (flag == 0) {
            printf("%4u  %8s  %-13s  (in the header)\n", type, "none",
                   renewer::node_type_strs[type]);
        } else {
            printf("%4u  %8d  %-13s  %s\n", type, bit_of(flag), renewer::node_type_strs[type],
                   file_name(type).c_str());
        }
    }
    return good;
}

} // namespace pack
