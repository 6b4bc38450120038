#include "discovery/package_fit.h"

#include "package/package.h"
#include "platform/debug.h"
#include "platform/owner.h"

#include <cstring>

namespace renewer {

namespace {

// Where the main application leaves the header of a new-layout package.
constexpr const char pack_header_path[] = "/data/app/log/pack_tmp";

// A kind that is checked: its lines, and the characters of the unit's part number that count.
struct kind_rule {
    const char *opening;
    size_t place;
    const char *fit;
    const char *not_fit;
};

constexpr kind_rule rules[] = {
    {"old host pack!\n", 2, "host 2,3 PN fit!\n", "host 2,3 PN not fit!\n"},
    {"gnss pack!\n", 6, "gnss 6,7 PN fit!\n", "gnss 6,7 PN not fit!\n"},
    {"radio pack!\n", 10, "", "pn radio not fit\n"}, // three forms that fit, see `radio_form`
    {"new host pack!\n", 2, "2,3 PN fit!\n", "2,3 PN not fit!\n"},
};

// A unit takes the packages of its own radio and of two related ones: the one whose first
// character is 5 above its own, and the one whose second character is 2 below. Null for no form.
const char *radio_form(pn_pair pair, const host_info &host) {
    const auto above = static_cast<char>(host.pn[10] + 5);
    const auto below = static_cast<char>(host.pn[11] - 2);
    if (!host_pn_is(host, 10, host.pn[10], host.pn[11])) { // a part number without a radio
        return nullptr;
    }
    if (pair.first == above && pair.second == host.pn[11]) {
        return "10,11 PN OK!\n";
    }
    if (pair.first == host.pn[10] && pair.second == host.pn[11]) {
        return "K618 RADIO !\n";
    }
    if (pair.first == host.pn[10] && pair.second == below) {
        return "Q7 K618 RADIO !\n";
    }
    return nullptr;
}

// A header that cannot be read is not checked for: it stays zero, which fits no unit.
kind_judgement judge_new_host(const host_info &host) {
    pack_head_new head = {};
    get_pack_head_new(pack_header_path, &head);
    const owned_memory<char> version_text(head.version_content);
    show_header_new(&head);
    const kind_judgement judgement = judge_kind(KIND_NEW_HOST, {head.pn[2], head.pn[3]}, host);
    if (!judgement.fits) {
        debug(0, "pn=%.*s\n", static_cast<int>(sizeof(head.pn)), head.pn);
        debug(0, "pn2=%c,pn3=%c,st2=%c,st3=%c\n", head.pn[2], head.pn[3], host.pn[2], host.pn[3]);
    }
    return judgement;
}

} // namespace

pn_pair first_two(const char *text) {
    char two[2] = {};
    memcpy(two, text, strnlen(text, sizeof(two)));
    return {two[0], two[1]};
}

bool is_checked_kind(int kind) {
    return kind >= KIND_OLD_HOST && kind <= KIND_NEW_HOST;
}

size_t compared_place(int kind) {
    return rules[kind].place;
}

kind_judgement judge_kind(int kind, pn_pair pair, const host_info &host) {
    const kind_rule &rule = rules[kind];
    if (kind == KIND_RADIO) {
        const char *const form = radio_form(pair, host);
        return {form != nullptr, form != nullptr ? form : rule.not_fit};
    }
    const bool fits = host_pn_is(host, rule.place, pair.first, pair.second);
    return {fits, fits ? rule.fit : rule.not_fit};
}

int package_fits(int kind, const char *expected, const host_info &host) {
    if (!is_checked_kind(kind)) {
        return 1;
    }
    debug(1, "%s", rules[kind].opening);
    const kind_judgement judgement =
        kind == KIND_NEW_HOST ? judge_new_host(host) : judge_kind(kind, first_two(expected), host);
    debug(judgement.fits ? 1 : 0, "%s", judgement.note);
    return judgement.fits ? 1 : 0;
}

} // namespace renewer
