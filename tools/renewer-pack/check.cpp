#include "commands.h"

#include "package_json.h"
#include "signed.h"

#include <algorithm>
#include <cstdio>
#include <system_error>

namespace pack {

namespace {

std::string joined(const std::vector<std::string> &defects) {
    std::string text;
    for (const std::string &defect : defects) {
        text += (text.empty() ? "" : "; ") + defect;
    }
    return text;
}

// The result for one package.
struct result {
    int status = good;
    std::string words;
    json document;
};

result check_one(const std::filesystem::path &path, const std::filesystem::path &key) {
    examination examined = examine(path);
    std::string words = "good";
    json signature = nullptr;
    if (!key.empty()) {
        const signature_result signed_by = check_signature_of(path, key);
        signature = {{"holds", signed_by.holds}, {"comment", signed_by.comment}};
        words += ", signed: " + signed_by.comment;
        if (!signed_by.holds) {
            examined.defects.insert(examined.defects.begin(), signed_by.reason);
        }
    }
    const bool is_good = examined.defects.empty();
    json document = {{"file", name_of(path)}, {"good", is_good}, {"signature", signature}};
    document.update(document_of(examined));
    return {is_good ? good : package_refused,
            is_good ? words : "refused: " + joined(examined.defects), document};
}

// A package that cannot be read does not stop the check of the others.
result check_or_report(const std::filesystem::path &path, const std::filesystem::path &key) {
    try {
        return check_one(path, key);
    } catch (const std::system_error &error) {
        const std::string words = "cannot be read: " + error.code().message();
        return {system_error,
                words,
                {{"file", name_of(path)},
                 {"good", false},
                 {"signature", nullptr},
                 {"defects", {words}}}};
    }
}

} // namespace

int check(const check_options &options) {
    int status = good;
    json packages = json::array();
    for (const std::filesystem::path &path : options.packages) {
        const result checked = check_or_report(path, options.key);
        status = std::max(status, checked.status);
        if (options.as_json) {
            packages.push_back(checked.document);
            continue;
        }
        printf("%s: %s\n", printable(path.string()).c_str(), printable(checked.words).c_str());
        fflush(stdout);
    }
    return options.as_json ? print_document("check", status, {{"packages", packages}}) : status;
}

} // namespace pack
