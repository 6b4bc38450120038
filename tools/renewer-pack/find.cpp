#include "commands.h"

#include "discovery/package_search.h"
#include "host_record.h"
#include "json_output.h"
#include "judgement.h"

#include <cstdio>

namespace pack {

namespace {

namespace fs = std::filesystem;
using renewer::candidate_outcome;
using renewer::package_candidate;

const std::vector<fs::path> unit_directories = {"/media/sda1", "/firmware", "/mnt"};

constexpr const char *outcome_names[] = {"other_name",  "long_path",      "short_header",
                                         "other_magic", "other_hardware", "other_part_number",
                                         "not_later",   "latest"};

// A search of one directory after the other, and its report.
struct search {
    renewer::host_info host;
    std::string inputs;
    bool as_json;
    uint32_t best_version;
    json directories;
};

void print_line(const search &going, const fs::path &path, const std::string &what) {
    if (!going.as_json) {
        printf("%s: %s\n", printable(path.string()).c_str(), what.c_str());
    }
}

bool inputs_allow_candidate(void *context, const renewer::pack_head &head) {
    return inputs_allow(&static_cast<search *>(context)->inputs, head);
}

std::string sentence_of(const package_candidate &candidate, const search &going) {
    const std::string reason = reason_of(candidate, going.host, going.inputs);
    switch (candidate.outcome) {
    case candidate_outcome::latest:
        return reason + ", the latest so far";
    case candidate_outcome::not_later:
        return reason + ", passed over: not later than " + version_text(going.best_version);
    case candidate_outcome::other_hardware:
    case candidate_outcome::other_part_number:
        return "ends the search of the directory: " + reason;
    default:
        return "passed over: " + reason;
    }
}

void report(void *context, const package_candidate &candidate) {
    search &going = *static_cast<search *>(context);
    const fs::path path = candidate.path;
    if (path.filename() == "." || path.filename() == "..") {
        return;
    }
    if (candidate.outcome == candidate_outcome::latest) {
        going.best_version = candidate.head.version;
    }
    print_line(going, path, sentence_of(candidate, going));
    going.directories.back()["candidates"].push_back(
        {{"file", name_of(path)},
         {"outcome", outcome_names[static_cast<size_t>(candidate.outcome)]},
         {"reason", reason_of(candidate, going.host, going.inputs)}});
}

// Returns the package that the unit would take from the directory; empty for none.
fs::path search_one(const fs::path &directory, search &going) {
    char path[renewer::candidate_path_size] = {};
    renewer::best_package best = {.path = path, .path_size = sizeof(path), .version = 0};
    going.best_version = 0;
    going.directories.push_back(
        {{"directory", name_of(directory)}, {"listed", true}, {"candidates", json::array()}});
    const renewer::search_end end = renewer::search_directory(
        directory.c_str(), going.host, {inputs_allow_candidate, report, &going}, &best);
    if (end == renewer::search_end::not_listed) {
        going.directories.back()["listed"] = false;
        print_line(going, directory,
                   "passed over: it cannot be listed, or not be read and written");
    }
    const bool taken =
        end == renewer::search_end::at_last_entry && renewer::can_be_chosen(best.version);
    return taken ? path : fs::path();
}

int finish(const search &going, const fs::path &found) {
    const int status = found.empty() ? package_refused : good;
    if (going.as_json) {
        return print_document("find", status,
                              {{"directories", going.directories},
                               {"found", found.empty() ? json(nullptr) : json(name_of(found))}});
    }
    printf("found: %s\n", found.empty() ? "nothing" : printable(found.string()).c_str());
    return status;
}

} // namespace

int find(const find_options &options) {
    search going = {.host = read_host_record(options.unit),
                    .inputs = options.inputs,
                    .as_json = options.as_json,
                    .best_version = 0,
                    .directories = json::array()};
    const auto &directories = options.directories.empty() ? unit_directories : options.directories;
    for (const fs::path &directory : directories) {
        const fs::path found = search_one(directory, going);
        if (!found.empty()) {
            return finish(going, found);
        }
    }
    return finish(going, "");
}

} // namespace pack
