#include "discovery/get_valid_package.h"

#include "discovery/package_search.h"
#include "platform/debug.h"
#include "platform/owner.h"

#include <array>
#include <cstdint>
#include <cstdio>

namespace renewer {

namespace {

constexpr size_t result_size = 512;

constexpr const char *s_udisk_diretory = "/media/sda1";
constexpr const char *s_check_diretory = "/firmware";
constexpr const char *s_mnt_diretory = "/mnt";

// A hardware-presence input of the unit (its GPIO class); `unread` is the value of an empty file.
struct presence_input {
    const char *path;
    const char *open_failure;
    char unread;
};
constexpr std::array<presence_input, 3> presence_inputs = {{
    {"/sys/class/misc/gpio-misc/7Pin_Detect/value", "open 7Pin_Detect fail!\n", '2'},
    {"/sys/class/misc/gpio-misc/Batter_A_Detect/value", "open Batter_A_Detect fail!\n", '\0'},
    {"/sys/class/misc/gpio-misc/Batter_B_Detect/value", "open Batter_B_Detect fail!\n", '\0'},
}};

// Opens all inputs before any is read; false at the first that cannot be opened.
bool open_presence_inputs(std::array<owned_file, presence_inputs.size()> *files) {
    for (size_t i = 0; i < files->size(); ++i) {
        (*files)[i].reset(fopen(presence_inputs[i].path, "re"));
        if ((*files)[i] == nullptr) {
            debug(0, "%s", presence_inputs[i].open_failure);
            return false;
        }
    }
    return true;
}

bool hardware_allows(void *, const pack_head &head) {
    std::array<owned_file, presence_inputs.size()> files;
    if (!open_presence_inputs(&files)) {
        return false;
    }
    bool all_absent = true;
    for (size_t i = 0; i < files.size(); ++i) {
        char input = presence_inputs[i].unread;
        [[maybe_unused]] const size_t taken = fread(&input, 1, 1, files[i].get());
        all_absent = all_absent && input == '0';
    }
    if (all_absent) {
        debug(0, "new saker!\n");
        if (!is_fit_for_new_hardware(head.version)) {
            debug(0, "file version is too old!\n");
            return false;
        }
    }
    debug(0, "file version is fit!\n");
    return true;
}

void show_candidate(const pack_head &head, const host_info &host) {
    const auto digit = [&head](unsigned index) { return pn_digit(head, index); };
    printf("num0 %d num1 %d num2 %d num3 %d num4 %d num5 %d num6 %d num9 %d num10 %d num12 %d "
           "stHostinfo %.*s\n",
           digit(1), digit(0), digit(2), digit(3), digit(4), digit(5), digit(6), digit(9),
           digit(10), digit(13), int{sizeof(host.pn)}, host.pn);
}

// Only candidates whose part number was compared are printed.
void report(void *context, const package_candidate &candidate) {
    if (candidate.fit.first_line == nullptr) {
        return;
    }
    show_candidate(candidate.head, *static_cast<const host_info *>(context));
    printf("%s%s", candidate.fit.first_line, candidate.fit.note);
}

} // namespace

int find_valid_package(const char *dir, const host_info *host, char *out, size_t out_size) {
    if (dir == nullptr || host == nullptr || out == nullptr) {
        return 0;
    }
    host_info unit = *host;
    best_package best = {.path = out, .path_size = out_size, .version = 0};
    // A candidate that ends the search also drops what was found before it.
    if (search_directory(dir, unit, {hardware_allows, report, &unit}, &best) !=
        search_end::at_last_entry) {
        return 0;
    }
    printf("last_ver %d\n", static_cast<int32_t>(best.version));
    if (!can_be_chosen(best.version)) {
        return 0;
    }
    printf("\n%s\n", out);
    return 1;
}

int find_packge(char **result) {
    debug(0, "Looking for firmware packages...\n");
    if (result == nullptr) {
        return 0;
    }
    owned_memory<char> path(static_cast<char *>(calloc(result_size, 1)));
    if (path == nullptr) {
        return 0;
    }
    host_info host = {};
    if (get_local_host_info(&host) == 0) {
        fputs("Get /update/hw/sys failure!!!\n", stderr);
        return 0;
    }
    for (const char *const dir : {s_udisk_diretory, s_check_diretory, s_mnt_diretory}) {
        if (find_valid_package(dir, &host, path.get(), result_size) == 1) {
            *result = path.release();
            return 1;
        }
    }
    return 0;
}

} // namespace renewer
