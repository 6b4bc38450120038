#include "signed.h"

#include "commands.h"
#include "file_bytes.h"
#include "signature/signature.h"

#include <algorithm>
#include <cerrno>

namespace pack {

namespace {

using renewer::signature_fault;

std::string missing_signature(const std::filesystem::path &package) {
    const std::filesystem::path beside = package.string() + ".minisig";
    if (errno != ENOENT) {
        fail(beside);
    }
    return "it is not signed: there is no " + beside.string() + " (minisign -S makes it)";
}

} // namespace

signature_result check_signature_of(const std::filesystem::path &package,
                                    const std::filesystem::path &key) {
    renewer::signature_report report;
    errno = 0;
    if (renewer::check_signature(package.c_str(), nullptr, key.c_str(), &report) == 1) {
        std::string comment = report.comment;
        std::replace(comment.begin(), comment.end(), '\t',
                     ' '); // minisign puts tabs into its default comments
        return {.holds = true, .comment = comment, .reason = ""};
    }
    switch (report.fault) {
    case signature_fault::key_unreadable:
        fail(key);
    case signature_fault::key_malformed:
        throw usage_error(key.string() + " is not a public key (minisign -G makes one)");
    case signature_fault::file_unreadable:
        fail(package);
    case signature_fault::signature_missing:
        return {.holds = false, .comment = "", .reason = missing_signature(package)};
    default:
        return {.holds = false, .comment = "", .reason = signature_fault_str(report.fault)};
    }
}

} // namespace pack
