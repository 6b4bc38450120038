#pragma once

#include "discovery/package_candidate.h"
#include "package/package.h"
#include "unit/host_info.h"

#include <cstddef>
#include <cstdint>

// The search of a directory for the package that a unit takes. It prints nothing; its judgement of
// each entry is reported to an observer.
namespace renewer {

constexpr size_t candidate_path_size = 256;

// The judgement of a directory entry. The first four are skipped, the next two end the search.
enum class candidate_outcome {
    other_name,
    long_path, // of 256 bytes or more
    short_header,
    other_magic,
    other_hardware,
    other_part_number,
    not_later, // it fits, but an earlier entry has this version or a later one
    latest,    // of the fitting ones so far
};

struct package_candidate {
    candidate_outcome outcome;
    char path[candidate_path_size]; // cut for `long_path`
    pack_head head;                 // what could be read of it
    candidate_fit fit;              // zero unless the part number was judged
};

// The question and the report of a search. `context` is passed to both.
struct search_observer {
    // Whether the unit's hardware-presence inputs allow a package for which they matter.
    bool (*hardware_allows)(void *context, const pack_head &head);
    void (*report)(void *context, const package_candidate &candidate);
    void *context;
};

// The best package so far, in a buffer of the caller's.
struct best_package {
    char *path;       // at least 256 bytes
    size_t path_size; // bytes that are cleared before each new path
    uint32_t version; // 0 for none
};

enum class search_end { not_listed, at_candidate, at_last_entry };

// Whether a package of this version is ever taken: 0.0.0 is not, nor one with bit 31 set.
bool can_be_chosen(uint32_t version);

// Judges one file by itself: `latest` when it fits. The observer's `report` is not called.
package_candidate judge_candidate(const char *dir, const char *name, const host_info &host,
                                  const search_observer &observer);

// Looks at the entries of `dir`, which must be readable and writable, in the order in which it
// lists them, and keeps in `best` the one with the highest version among those that fit `host`, of
// equal versions the first. The first package that does not fit ends the search.
search_end search_directory(const char *dir, const host_info &host, const search_observer &observer,
                            best_package *best);

} // namespace renewer
