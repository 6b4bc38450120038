#include "package/package.h"

#include "platform/debug.h"

namespace renewer {

namespace {

constexpr int git_version_type = 29; // its content is in the header, so it has no bit

bool in_table(int type) {
    return type >= 0 && static_cast<size_t>(type) < node_type_strs.size();
}

} // namespace

constexpr std::array<const char *, 66> node_type_strs = {
    "",
    "install",
    "uboot",
    "kernel",
    "rootfs",
    "gnss_board_1",
    "gnss_board_2",
    "gnss_board_3",
    "gnss_board_4",
    "radio_1",
    "radio_2",
    "qspi",
    "dtb",
    "app",
    "gnss_board_5",
    "gnss_board_6",
    "gnss_board_7",
    "gnss_board_8",
    "gnss_board_9",
    "gnss_board_10",
    "gnss_board_11",
    "gnss_board_12",
    "gnss_board_13",
    "gnss_board_14",
    "gnss_board_15",
    "radio_3",
    "radio_4",
    "dtb1",
    "dtb2",
    "git_version",
    "update_info",
    "renewer",
    "pn_menu",
    "md5_file",
    "member33",
    "member34",
    "member35",
    "member36",
    "member37",
    "member38",
    "member39",
    "member40",
    "member41",
    "member42",
    "member43",
    "member44",
    "member45",
    "member46",
    "member47",
    "member48",
    "member49",
    "member50",
    "member51",
    "member52",
    "member53",
    "member54",
    "member55",
    "member56",
    "member57",
    "member58",
    "member59",
    "member60",
    "member61",
    "member62",
    "member63",
    "member64",
};

const char *node_type_to_str(int type) {
    debug(5, "type=%d\n", type);
    return in_table(type) ? node_type_strs[static_cast<size_t>(type)] : "";
}

const char *node_file_suffix(uint32_t type) {
    return type == install_type ? ".sh" : ".bin";
}

uint64_t node_type_flag(int type) {
    if (!in_table(type) || type == 0 || type == git_version_type) {
        return 0;
    }
    // All types after the one without a bit have moved down by one.
    return uint64_t{1} << (type < git_version_type ? type - 1 : type - 2);
}

} // namespace renewer
