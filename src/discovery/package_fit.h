#pragma once

#include "unit/host_info.h"

namespace renewer {

// Package kinds, as the first argument of the program names them; every other number is a package
// that is not checked.
enum package_kind : int {
    KIND_OLD_HOST = 0,
    KIND_GNSS = 1,
    KIND_RADIO = 2,
    KIND_NEW_HOST = 3,
};

// Checks that a package of this kind is meant for this unit, and prints what was found.
//
// expected: for kinds 0 to 2, the part-number characters that the package is meant for; its first
//           two are read, or fewer when it is shorter. Not read for other kinds: a package of kind
//           3 carries its part number in the header in "/data/app/log/pack_tmp".
//
// Returns 1 when the package fits (or its kind is not checked), 0 when it does not.
int package_fits(int kind, const char *expected, const host_info &host);

} // namespace renewer
