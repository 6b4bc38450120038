#pragma once

#include "unit/host_info.h"

#include <cstddef>

namespace renewer {

// Package kinds, as the first argument of the program names them; every other number is a package
// that is not checked.
enum package_kind : int {
    KIND_OLD_HOST = 0,
    KIND_GNSS = 1,
    KIND_RADIO = 2,
    KIND_NEW_HOST = 3,
};

// The two part-number characters that a package is meant for.
struct pn_pair {
    char first;
    char second;
};

// Takes the first two characters of a text; zero for what it lacks.
pn_pair first_two(const char *text);

struct kind_judgement {
    bool fits;
    const char *note; // the line that the run prints of it
};

// Whether packages of this kind are checked.
bool is_checked_kind(int kind);

// Place of the first of the two characters of the unit's part number that a package of a checked
// kind is compared with.
size_t compared_place(int kind);

// Judges a package of a checked kind that is meant for `pair`; prints nothing.
kind_judgement judge_kind(int kind, pn_pair pair, const host_info &host);

// Checks that a package of this kind is meant for this unit, and prints what was found.
//
// expected: for kinds 0 to 2, the part-number characters that the package is meant for; its first
//           two are read, or fewer when it is shorter. Not read for other kinds: a package of kind
//           3 carries its part number in the header in "/data/app/log/pack_tmp".
//
// Returns 1 when the package fits (or its kind is not checked), 0 when it does not.
int package_fits(int kind, const char *expected, const host_info &host);

} // namespace renewer
