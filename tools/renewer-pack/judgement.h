#pragma once

#include "discovery/package_fit.h"
#include "discovery/package_search.h"
#include "package_file.h"

#include <optional>
#include <string>
#include <vector>

// How the updater and its search judge a package for a unit, in words.
namespace pack {

enum class verdict { fits, differs, not_asked };

// One rule and what it compared.
struct judgement {
    std::string rule; // "run" with its kind, "model" or "search"
    verdict result = verdict::not_asked;
    std::string package; // the characters that the package is for; empty if none were compared
    std::string unit;    // those of the unit
    std::string text;    // the judgement as a sentence
};

// How the updater would be started.
struct run_arguments {
    std::optional<int> kind; // if empty, the one that fits the package
    std::string pn;          // two characters for kinds 0 to 2; if empty, those of the package
};

// Applies the part-number rules of the run. Throws `usage_error` for a kind that is impossible with
// the package.
judgement judge_run(const package_file &package, const renewer::host_info &host,
                    const run_arguments &arguments);

// Judges whether the updater knows the unit's model, and so has prompts for it.
judgement judge_model(const renewer::host_info &host);

// What the user of a unit sees, by its model.
const char *prompts_of(const renewer::host_info &host);

// Applies the rules of the search on storage. `inputs` are the unit's three hardware-presence
// inputs as read; empty if unknown.
judgement judge_search(const package_file &package, const renewer::host_info &host,
                       const std::string &inputs);

// The search's question about the unit's hardware, for known or unknown inputs. `inputs` points to
// a `std::string` with them.
bool inputs_allow(void *inputs, const renewer::pack_head &head);

// Why the search skips a candidate or ends at it; for one that fits, its version.
std::string reason_of(const renewer::package_candidate &candidate, const renewer::host_info &host,
                      const std::string &inputs);

} // namespace pack
