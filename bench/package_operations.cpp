// Runs one operation of the package library in a process of its own, so that its time and memory
// can be compared with those of a usual command (see compare_packages.py).
#include "discovery/get_valid_package.h"
#include "package/package.h"

#include <cstring>
#include <string_view>

using namespace renewer;

namespace {

int check(char **arguments) {
    return validate_package_new(arguments[0]);
}

int unpack(char **arguments) {
    return unpack_package_new(arguments[0], arguments[1]);
}

// Source, package.
int generate(char **arguments) {
    package_plan plan = {.version = {1, 1, 4, 0},
                         .git_version = "1a2b3c4d",
                         .pn = "101356340012",
                         .made = {},
                         .sources = {}};
    plan.sources[4] = arguments[0];
    return write_package(plan, arguments[1]);
}

// Directory, part number of the unit.
int find(char **arguments) {
    host_info host = {};
    strncpy(host.pn, arguments[1], sizeof(host.pn) - 1);
    char path[256];
    return find_valid_package(arguments[0], &host, path, sizeof(path));
}

constexpr struct {
    std::string_view name;
    int arguments;
    int (*run)(char **arguments);
} operations[] = {
    {"check", 1, check}, {"unpack", 2, unpack}, {"generate", 2, generate}, {"find", 2, find}};

// Prints the peak memory of this process (proc(5), status). getrusage would include the memory of
// the program that started it.
void report_peak_memory() {
    FILE *const status = fopen("/proc/self/status", "r");
    char line[128];
    while (status != nullptr && fgets(line, sizeof(line), status) != nullptr) {
        if (strncmp(line, "VmHWM:", 6) == 0) {
            fputs(line, stderr);
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    for (const auto &[name, arguments, run] : operations) {
        if (argc == arguments + 2 && argv[1] == name) {
            const int result = run(argv + 2);
            report_peak_memory();
            return result == 1 ? 0 : 1;
        }
    }
    fputs("usage: package_operations check FILE | unpack FILE DIR | generate FILE PACKAGE |"
          " find DIR PN\n",
          stderr);
    return 2;
}
