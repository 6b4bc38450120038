#pragma once

#include "discovery/package_fit.h"
#include "discovery/package_search.h"
#include "package_file.h"

#include <optional>
#include <string>
#include <vector>

// What the updater and its search think of a package for a unit, in words.
namespace pack {

enum class verdict { fits, differs, not_asked };

// One rule and what it compared.
struct judgement {
    std::string rule; // "run" with its kind, "model" or "search"
    verdict result = verdict::not_asked;
    std::string package; // the characters that the package is for; empty when none were compared
    std::string unit;    // those that the unit has
    std::string text;    // all of this as a sentence
};

// How the updater would be started.
struct run_arguments {
    std::optional<int> kind; // else the one that fits the package
    std::string pn;          // two characters for kinds 0 to 2; else those of the package
};

// Judges by the part-number rules of the run. Throws `misused` for a kind that the package cannot
// be started with.
judgement judge_run(const package_file &package, const renewer::host_info &host,
                    const run_arguments &arguments);

// Judges whether the updater knows the unit's model: it has no prompts for another one.
judgement judge_model(const renewer::host_info &host);

// What the user of a unit sees and presses, by its model.
const char *prompts_of(const renewer::host_info &host);

// Judges by the rules of the search on storage. `inputs` are the three hardware-presence inputs of
// the unit as they read; empty when they are not known.
judgement judge_search(const package_file &package, const renewer::host_info &host,
                       const std::string &inputs);

// What the search asks of the unit's hardware, with inputs that are known or not. The context is a
// `std::string` with the inputs.
bool inputs_allow(void *inputs, const renewer::pack_head &head);

// Why the search passes a candidate over or ends at it; of one that fits, its version.
std::string reason_of(const renewer::package_candidate &candidate, const renewer::host_info &host,
                      const std::string &inputs);

} // namespace pack
