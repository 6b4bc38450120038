#pragma once

#include "discovery/package_candidate.h"
#include "unit/host_info.h"

#include <cstddef>

// The search for an update package on storage. It knows packages of the old layout.
namespace renewer {

// Searches "/media/sda1", then "/firmware", then "/mnt", and takes the package from the first
// directory that has one for this unit. Prints what `find_valid_package` prints for each; a host
// record that cannot be read is reported on standard error.
//
// Returns 1 and sets `*result` to a buffer of 512 bytes with the path, which the caller frees; 0
// when there is none, with `*result` as it was.
int find_packge(char **result);

// Looks in `dir`, which must be readable and writable, for the package with the highest version
// among those that fit `host`; of equal versions the one listed first. Prints its judgement of each
// candidate. The first package that does not fit ends the search. A candidate whose path would have
// 256 bytes or more is skipped.
//
// Returns 1 with the path in `out` (at least 256 bytes), of which `out_size` bytes are cleared
// first for each new best; 0 when none was chosen, when the highest version is 0 or has bit 31
// set, and for a null argument.
int find_valid_package(const char *dir, const host_info *host, char *out, size_t out_size);

} // namespace renewer
