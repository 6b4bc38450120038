// Finds an update package for this unit on its storage, checks who signed it, unpacks it and starts
// the updater:
//
//     start_update PUBLIC_KEY

#include "discovery/get_valid_package.h"
#include "discovery/package_candidate.h"
#include "package/package.h"
#include "signature/signature.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr char package_copy[] = "/firmware/update.bin";
constexpr char signature_copy[] = "/firmware/update.bin.minisig";
constexpr char unpacked[] = "/firmware/update";
constexpr char updater[] = "/data/sbin/renewer";

// A stick can be changed or pulled at any time: what is checked and unpacked is a copy.
bool copy_file(const char *from, const char *to) {
    const int in = open(from, O_RDONLY | O_CLOEXEC);
    const int out = open(to, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ssize_t copied = in < 0 || out < 0 ? -1 : 1;
    while (copied > 0) {
        copied = sendfile(out, in, nullptr, size_t{1} << 20);
    }
    close(in);
    return close(out) == 0 && copied == 0;
}

bool is_signed(const char *key) {
    static renewer::signature_report report;
    if (renewer::check_signature(package_copy, signature_copy, key, &report) == 1) {
        printf("signed: %s\n", report.comment);
        return true;
    }
    fprintf(stderr, "not installed: %s\n", renewer::signature_fault_str(report.fault));
    return false;
}

// The updater checks a host package once more, by the two characters of the model; what else the
// search has found to fit needs no other check (a kind that is none of the updater's).
void start_updater(const renewer::pack_head &head) {
    const bool is_host = renewer::pn_digit(head, 6) == renewer::host_package;
    const char model[] = {static_cast<char>('0' + renewer::pn_digit(head, 2)),
                          static_cast<char>('0' + renewer::pn_digit(head, 3)), '\0'};
    fflush(stdout);
    execl(updater, "renewer", is_host ? "0" : "4", "/media/sda1/update", model, nullptr);
    perror(updater);
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2) {
        fputs("usage: start_update PUBLIC_KEY\n", stderr);
        return 2;
    }
    char *found = nullptr;
    if (renewer::find_packge(&found) != 1) {
        return 1;
    }
    char signature[600];
    snprintf(signature, sizeof(signature), "%s.minisig", found);
    const bool copied = copy_file(found, package_copy) && copy_file(signature, signature_copy);
    free(found);
    if (!copied) {
        perror("not copied");
        return 1;
    }
    renewer::pack_head head = {};
    if (!is_signed(argv[1]) || renewer::validate_package(package_copy) != 1 ||
        renewer::get_pack_head(package_copy, &head) != 1 ||
        renewer::unpack_package(package_copy, unpacked) != 1) {
        return 1;
    }
    start_updater(head);
    return 1;
}
