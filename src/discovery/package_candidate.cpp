#include "discovery/package_candidate.h"

#include <cstring>
#include <string_view>

namespace renewer {

namespace {

using namespace std::string_view_literals;

constexpr size_t shortest_name = 20;
constexpr size_t kind_from_end = 13;
constexpr uint32_t version_bits = 0xffffff;
constexpr uint32_t first_version_for_new_hardware = 2U << 16 | 0U << 8 | 16U;

// The code of PN character `index`, the same whether or not char has a sign.
int code(const host_info &host, size_t index) {
    return static_cast<unsigned char>(host.pn[index]);
}

int digit(const host_info &host, size_t index) {
    return code(host, index) - '0';
}

bool digits_match(const host_info &host, size_t first, const pack_head &head,
                  unsigned first_digit) {
    return digit(host, first) == pn_digit(head, first_digit) &&
           digit(host, first + 1) == pn_digit(head, first_digit + 1);
}

bool is_a1(const host_info &host) {
    return host_pn_is(host, 0, 'A', '1');
}

candidate_fit judge_host(const pack_head &head, const host_info &host) {
    constexpr const char *first_line = "got   package\n";
    constexpr const char *refused = "pn 2/3/17 not fit\n";
    // "A1" in hexadecimal digits.
    if (is_a1(host) && (pn_digit(head, 1) != 1 || pn_digit(head, 0) != 10)) {
        return {false, first_line, " invailed package,pn not fit", {0, 2, 0, 2}};
    }
    if (!digits_match(host, 2, head, 2)) {
        return {false, first_line, refused, {2, 2, 2, 2}};
    }
    const int variant = pn_digit(head, 13);
    if (variant != 4 && variant != 5) {
        return {false, first_line, refused, {13, 1, 0, 0}};
    }
    return {true, first_line, "", {2, 2, 2, 2}};
}

candidate_fit judge_gnss_board(const pack_head &head, const host_info &host) {
    constexpr const char *first_line = "got   gnss board package\n";
    const bool a1 = is_a1(host);
    const size_t place = a1 ? 6 : 4;
    const bool fits = digits_match(host, place, head, 4);
    const char *const refused = a1 ? "pn 6/7 not fit\n" : "pn 45 not fit\n";
    return {fits, first_line, fits ? "" : refused, {4, 2, place, 2}};
}

// By which form a radio package fits, as the line that is printed of it; null for none.
const char *radio_form(const pack_head &head, const host_info &host) {
    const bool second_matches = digit(host, 11) == pn_digit(head, 10);
    // '+' is '0' - 5: the package's digit is the unit's plus 5.
    if (code(host, 10) - '+' == pn_digit(head, 9) && second_matches) {
        return "";
    }
    if (digit(host, 10) == pn_digit(head, 9) && second_matches) {
        return "K618 RADIO !\n";
    }
    if (digit(host, 10) == pn_digit(head, 9) && pn_digit(head, 10) + 2 == digit(host, 11)) {
        return "Q7 K618 RADIO !\n";
    }
    return nullptr;
}

candidate_fit judge_radio(const pack_head &head, const host_info &host) {
    const char *const form = radio_form(head, host);
    return {form != nullptr,
            "got   radio  package\n",
            form != nullptr ? form : "pn radio not fit\n",
            {9, 2, 10, 2}};
}

candidate_fit judge_lband(const pack_head &, const host_info &host) {
    // Bit 1 says that an L-band receiver is fitted; the package's own digits do not matter.
    const bool fits = (code(host, 15) & 2) != 0;
    return {fits, "got  lband  package\n", fits ? "" : "pn lband not fit\n", {0, 0, 15, 1}};
}

candidate_fit judge_gprs(const pack_head &head, const host_info &host) {
    const int first = pn_digit(head, 7);
    // '5' is '0' + 5: the package's digit is the unit's, or the unit's minus 5.
    const bool fits = (digit(host, 8) == first || code(host, 8) - '5' == first) &&
                      digit(host, 9) == pn_digit(head, 8);
    return {fits, "got web  gprs  package\n", fits ? "" : "pn gprs not fit\n", {7, 2, 8, 2}};
}

// By package type.
constexpr candidate_fit (*judges[])(const pack_head &, const host_info &) = {
    judge_host, judge_gnss_board, judge_radio, judge_lband, judge_gprs};

} // namespace

bool is_package_name(const char *name) {
    const std::string_view text(name);
    if (text.size() < shortest_name || !text.starts_with("update_"sv) ||
        !text.ends_with(".bin"sv)) {
        return false;
    }
    const char kind = text[text.size() - kind_from_end];
    return kind == 'b' || kind == 't';
}

int pn_digit(const pack_head &head, unsigned index) {
    const unsigned pair = head.pn[index / 2];
    return static_cast<int>(index % 2 == 0 ? pair >> 4 : pair & 0xf);
}

candidate_fit judge_part_number(const pack_head &head, const host_info &host) {
    const int type = pn_digit(head, type_digit);
    if (type > gprs_package) {
        return {false, "", "invailed package!\n", {type_digit, 1, 0, 0}};
    }
    return judges[type](head, host);
}

bool needs_hardware_check(const pack_head &head, const host_info &host) {
    return pn_digit(head, type_digit) == host_package && host_pn_is(host, 0, '1', '1') &&
           host_pn_is(host, 2, '8', '0');
}

bool is_fit_for_new_hardware(uint32_t version) {
    return cmp_version(version, first_version_for_new_hardware) >= 0;
}

int cmp_version(uint32_t a, uint32_t b) {
    const uint32_t first = a & version_bits;
    const uint32_t second = b & version_bits;
    return first == second ? 0 : first > second ? 1 : -1;
}

} // namespace renewer
