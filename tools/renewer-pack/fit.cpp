#include "commands.h"

#include "host_record.h"
#include "json_output.h"
#include "judgement.h"

#include <algorithm>
#include <cstdio>
#include <system_error>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr const char *verdict_names[] = {"fits", "differs", "not_asked"};

// The result for one unit. The unit takes the package if at least one rule was applied and none
// speaks against it.
struct unit_result {
    fs::path record;
    std::string part_number;
    std::vector<judgement> judgements;
    std::string trouble; // why the record could not be judged
    int status = good;

    bool takes() const {
        const auto speaks_for = [](const judgement &judged) {
            return judged.result == verdict::fits && judged.rule != "model";
        };
        const auto speaks_against = [](const judgement &judged) {
            return judged.result == verdict::differs;
        };
        return std::any_of(judgements.begin(), judgements.end(), speaks_for) &&
               std::none_of(judgements.begin(), judgements.end(), speaks_against);
    }
};

unit_result judge(const package_file &package, const fs::path &record, const fit_options &options) {
    const renewer::host_info host = read_host_record(record);
    return {.record = record,
            .part_number = part_number_of(host),
            .judgements = {judge_run(package, host, {options.kind, options.pn}), judge_model(host),
                           judge_search(package, host, options.inputs)},
            .trouble = ""};
}

// A record that cannot be judged does not stop the judgement of the others.
unit_result judge_or_report(const package_file &package, const fs::path &record,
                            const fit_options &options) {
    try {
        return judge(package, record, options);
    } catch (const usage_error &reason) {
        return {.record = record,
                .part_number = "",
                .judgements = {},
                .trouble = "not a host record",
                .status = wrong_usage};
    } catch (const std::system_error &error) {
        return {.record = record,
                .part_number = "",
                .judgements = {},
                .trouble = "cannot be read: " + error.code().message(),
                .status = system_error};
    }
}

std::vector<fs::path> files_in(const fs::path &directory) {
    std::vector<fs::path> files;
    for (const auto &entry : fs::directory_iterator(directory)) {
        if (!entry.is_directory() && !entry.path().filename().string().starts_with('.')) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    if (files.empty()) {
        throw usage_error(directory.string() +
                          " has no host records (renewer-pack unit makes them)");
    }
    return files;
}

std::vector<unit_result> judge_all(const package_file &package, const fit_options &options) {
    std::vector<unit_result> results;
    if (!options.unit.empty()) {
        results.push_back(judge(package, options.unit, options));
    }
    if (!options.units.empty()) {
        for (const fs::path &file : files_in(options.units)) {
            results.push_back(judge_or_report(package, file, options));
        }
    }
    return results;
}

// The rules that speak against the package, on one line.
std::string reasons(const unit_result &result) {
    std::string text = result.trouble;
    for (const judgement &judged : result.judgements) {
        if (judged.result == verdict::differs) {
            text += (text.empty() ? "" : "; ") + judged.rule + ": " + judged.text;
        }
    }
    if (text.empty() && !result.takes()) {
        text = "no rule was asked";
    }
    return text;
}

void print_one(const unit_result &result) {
    for (const judgement &judged : result.judgements) {
        printf("  %s: %s\n", judged.rule.c_str(), judged.text.c_str());
    }
    printf("%s: %s\n", printable(result.record.string()).c_str(),
           result.takes() ? "takes it" : "does not take it");
}

void print_row(const unit_result &result, int width) {
    const std::string why = reasons(result);
    printf("%-*s  %-20s  %s%s%s\n", width, printable(result.record.filename().string()).c_str(),
           printable(result.part_number).c_str(), result.takes() ? "takes it" : "no",
           why.empty() ? "" : ": ", why.c_str());
}

void print_results(const package_file &package, const std::vector<unit_result> &results,
                   const fit_options &options, size_t taking) {
    printf("%s: %s layout, version %s, part number %s\n", printable(package.path.string()).c_str(),
           layout_name(package), printable(package.version).c_str(),
           printable(package.part_number).c_str());
    if (options.units.empty()) {
        print_one(results.front());
        return;
    }
    size_t width = 0;
    for (const unit_result &result : results) {
        width = std::max(width, result.record.filename().string().size());
    }
    for (const unit_result &result : results) {
        print_row(result, static_cast<int>(std::min<size_t>(width, 40)));
    }
    printf("%zu of %zu units take it\n", taking, results.size());
}

json document_of(const unit_result &result) {
    json rules = json::array();
    for (const judgement &judged : result.judgements) {
        rules.push_back({{"rule", judged.rule},
                         {"verdict", verdict_names[static_cast<size_t>(judged.result)]},
                         {"package", judged.package},
                         {"unit", judged.unit},
                         {"text", judged.text}});
    }
    return {{"file", name_of(result.record)},
            {"pn", result.part_number},
            {"takes", result.takes()},
            {"reason", reasons(result)},
            {"rules", rules}};
}

int print_json(const package_file &package, const std::vector<unit_result> &results, size_t taking,
               int status) {
    json units = json::array();
    for (const unit_result &result : results) {
        units.push_back(document_of(result));
    }
    return print_document("fit", status,
                          {{"file", name_of(package.path)},
                           {"layout", layout_name(package)},
                           {"version", package.version},
                           {"pn", package.part_number},
                           {"units", units},
                           {"taking", taking}});
}

package_file sound_package(const fs::path &path) {
    const package_file package = named_package(path);
    if (!package.defects.empty()) {
        throw refused(path.string() + ": " + package.defects.front());
    }
    return package;
}

} // namespace

int fit(const fit_options &options) {
    if (options.unit.empty() && options.units.empty()) {
        throw usage_error("fit needs --unit with a host record, or --units with a folder of them");
    }
    const package_file package = sound_package(options.package);
    const std::vector<unit_result> results = judge_all(package, options);
    const auto taking = static_cast<size_t>(
        std::count_if(results.begin(), results.end(), [](const auto &one) { return one.takes(); }));
    int status = taking > 0 ? good : package_refused;
    for (const unit_result &result : results) {
        status = std::max(status, result.status);
    }
    if (options.as_json) {
        return print_json(package, results, taking, status);
    }
    print_results(package, results, options, taking);
    return status;
}

} // namespace pack
