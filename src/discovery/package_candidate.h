#pragma once

#include "package/package.h"
#include "unit/host_info.h"

#include <cstddef>
#include <cstdint>

// The rules that decide whether a package on storage is for this unit. Nothing is read or printed
// here.
namespace renewer {

// Whether a file's name is one of a package: at least 20 characters, from "update_" to ".bin", with
// "b" or "t" as the ninth character before ".bin".
bool is_package_name(const char *name);

// Returns digit `index` (0 to 31) of the part number of an old-layout header.
int pn_digit(const pack_head &head, unsigned index);

// What a package updates, digit `type_digit` of its part number. Other values are of no known type.
constexpr unsigned type_digit = 6;
enum package_type { host_package, gnss_board_package, radio_package, lband_package, gprs_package };

// What was compared: `digits` digits of the package's part number from `digit` on, against as many
// characters of the unit's from `place` on. Without digits the character alone decided, without
// characters the digit alone.
struct compared_digits {
    unsigned digit;
    unsigned digits;
    size_t place;
    size_t places;
};

struct candidate_fit {
    bool fits;
    const char *first_line; // printed before the test, with its line end; empty for none
    const char *note; // printed after it: why it does not fit, or by which form; empty for none
    compared_digits compared; // the comparison that decided
};

// Judges the part number of a package against that of the unit.
candidate_fit judge_part_number(const pack_head &head, const host_info &host);

// Whether the unit's hardware-presence inputs matter for this package: a host package on a unit
// whose part number begins "1180".
bool needs_hardware_check(const pack_head &head, const host_info &host);

// Whether a version is 2.0.16 or later, as units without any of the presence inputs need it. Bits
// 24 to 31 are ignored.
bool is_fit_for_new_hardware(uint32_t version);

// Compares the low 24 bits of two versions: 1 when `a` is later, -1 when it is earlier, 0 when they
// are equal.
int cmp_version(uint32_t a, uint32_t b);

} // namespace renewer
