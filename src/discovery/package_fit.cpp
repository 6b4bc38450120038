#include "discovery/package_fit.h"

#include "package/package.h"
#include "platform/debug.h"
#include "platform/owner.h"

#include <cstring>

namespace renewer {

namespace {

// Where the main application leaves the header of a new-layout package.
constexpr const char pack_header_path[] = "/data/app/log/pack_tmp";

struct pn_pair {
    char first;
    char second;
};

pn_pair first_two(const char *text) {
    char two[2] = {};
    memcpy(two, text, strnlen(text, sizeof(two)));
    return {two[0], two[1]};
}

// A kind that is checked against two characters of the unit's part number.
struct pair_rule {
    const char *opening;
    size_t pn_index;
    const char *fit;
    const char *not_fit;
};

constexpr pair_rule old_host_rule = {"old host pack!\n", 2, "host 2,3 PN fit!\n",
                                     "host 2,3 PN not fit!\n"};
constexpr pair_rule gnss_rule = {"gnss pack!\n", 6, "gnss 6,7 PN fit!\n", "gnss 6,7 PN not fit!\n"};

int pair_fits(const pair_rule &rule, const pn_pair &expected, const host_info &host) {
    debug(1, "%s", rule.opening);
    if (!host_pn_is(host, rule.pn_index, expected.first, expected.second)) {
        debug(0, "%s", rule.not_fit);
        return 0;
    }
    debug(1, "%s", rule.fit);
    return 1;
}

// A unit takes the packages of its own radio and of two related ones: the one whose first
// character is 5 above its own, and the one whose second character is 2 below.
int radio_fits(const pn_pair &expected, const host_info &host) {
    debug(1, "radio pack!\n");
    const auto above = static_cast<char>(host.pn[10] + 5);
    const auto below = static_cast<char>(host.pn[11] - 2);
    if (host_pn_is(host, 10, host.pn[10], host.pn[11])) {
        if (expected.first == above && expected.second == host.pn[11]) {
            debug(1, "10,11 PN OK!\n");
            return 1;
        }
        if (expected.first == host.pn[10] && expected.second == host.pn[11]) {
            debug(1, "K618 RADIO !\n");
            return 1;
        }
        if (expected.first == host.pn[10] && expected.second == below) {
            debug(1, "Q7 K618 RADIO !\n");
            return 1;
        }
    }
    debug(0, "pn radio not fit\n");
    return 0;
}

// The comparison decides, whatever reading the header gave: what could not be read is zero.
int new_host_fits(const host_info &host) {
    debug(1, "new host pack!\n");
    pack_head_new head = {};
    get_pack_head_new(pack_header_path, &head);
    const owned_memory<char> version_text(head.version_content);
    show_header_new(&head);
    if (!host_pn_is(host, 2, head.pn[2], head.pn[3])) {
        debug(0, "pn=%.*s\n", static_cast<int>(sizeof(head.pn)), head.pn);
        debug(0, "pn2=%c,pn3=%c,st2=%c,st3=%c\n", head.pn[2], head.pn[3], host.pn[2], host.pn[3]);
        debug(0, "2,3 PN not fit!\n");
        return 0;
    }
    debug(1, "2,3 PN fit!\n");
    return 1;
}

} // namespace

int package_fits(int kind, const char *expected, const host_info &host) {
    switch (kind) {
    case KIND_OLD_HOST:
        return pair_fits(old_host_rule, first_two(expected), host);
    case KIND_GNSS:
        return pair_fits(gnss_rule, first_two(expected), host);
    case KIND_RADIO:
        return radio_fits(first_two(expected), host);
    case KIND_NEW_HOST:
        return new_host_fits(host);
    default:
        return 1;
    }
}

} // namespace renewer
