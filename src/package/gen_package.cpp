#include "package/package.h"

#include <ctime>

namespace renewer {

int gen_package(
    int iMainVersion, int iSubVersion, int iReversion, int itypeVersion, const char *git_version,
    const char *pn, const char *install, const char *uboot, const char *kernel, const char *rootfs,
    const char *gnss_board_1, const char *gnss_board_2, const char *gnss_board_3,
    const char *gnss_board_4, const char *radio_1, const char *radio_2, const char *packpath,
    const char *qspi, const char *dtb, const char *app, const char *gnss_board_5,
    const char *gnss_board_6, const char *gnss_board_7, const char *gnss_board_8,
    const char *gnss_board_9, const char *gnss_board_10, const char *gnss_board_11,
    const char *gnss_board_12, const char *gnss_board_13, const char *gnss_board_14,
    const char *gnss_board_15, const char *radio_3, const char *radio_4, const char *dtb1,
    const char *dtb2, const char *update_info, const char *renewer, const char *pn_menu,
    const char *md5_file, const char *member33, const char *member34, const char *member35,
    const char *member36, const char *member37, const char *member38, const char *member39,
    const char *member40, const char *member41, const char *member42, const char *member43,
    const char *member44, const char *member45, const char *member46, const char *member47,
    const char *member48, const char *member49, const char *member50, const char *member51,
    const char *member52, const char *member53, const char *member54, const char *member55,
    const char *member56, const char *member57, const char *member58, const char *member59,
    const char *member60, const char *member61, const char *member62, const char *member63,
    const char *member64) {
    package_plan plan = {
        .version = {iMainVersion, iSubVersion, iReversion, itypeVersion},
        .git_version = git_version,
        .pn = pn,
        .made = {},
        .sources = {nullptr,       install,       uboot,         kernel,        rootfs,
                    gnss_board_1,  gnss_board_2,  gnss_board_3,  gnss_board_4,  radio_1,
                    radio_2,       qspi,          dtb,           app,           gnss_board_5,
                    gnss_board_6,  gnss_board_7,  gnss_board_8,  gnss_board_9,  gnss_board_10,
                    gnss_board_11, gnss_board_12, gnss_board_13, gnss_board_14, gnss_board_15,
                    radio_3,       radio_4,       dtb1,          dtb2,          nullptr,
                    update_info,   renewer,       pn_menu,       md5_file,      member33,
                    member34,      member35,      member36,      member37,      member38,
                    member39,      member40,      member41,      member42,      member43,
                    member44,      member45,      member46,      member47,      member48,
                    member49,      member50,      member51,      member52,      member53,
                    member54,      member55,      member56,      member57,      member58,
                    member59,      member60,      member61,      member62,      member63,
                    member64}};
    const time_t now = time(nullptr);
    localtime_r(&now, &plan.made);
    return write_package(plan, packpath);
}

} // namespace renewer
