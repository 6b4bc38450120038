// The program's entry point: what it is called with, and who it is.

#include "discovery/package_fit.h"
#include "update/update_run.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace renewer;

// The executable carries both, also for `strings`.
[[gnu::used]] constexpr const char ident[] = "renewer_version:v" RENEWER_VERSION;
[[gnu::used]] constexpr const char build_time[] = "$ Built_Time: " __DATE__ " " __TIME__ " $";

constexpr const char usage[] = "usage: renewer KIND PATH PN\n";
constexpr const char help[] =
    "\n"
    "Updates this unit from the unpacked package in /firmware/update, asks the user first\n"
    "unless PATH contains \"firmware\", and reboots the unit.\n"
    "\n"
    "  KIND  package kind: 0 host (old layout), 1 GNSS board, 2 radio, 3 host (new layout);\n"
    "        any other number: no part-number check\n"
    "  PATH  the package, or the directory that holds its unpacked files; not below /mnt\n"
    "  PN    the two part-number characters that the package is meant for (kinds 0 to 2)\n"
    "\n"
    "  --version  print the version and the build time\n"
    "  --help     print this text\n"
    "\n"
    "Exit status: 0 refused or cancelled, 1 after an update attempt, 2 used wrongly.\n";

// A decimal number at the start of the text; 0 when there is none.
int number_of(const char *text) {
    const long number = strtol(text, nullptr, 10);
    // Where a long is wider than an int, a conversion alone could turn a large number into a kind.
    return static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

bool is_checked_against_argument(int kind) {
    return kind == KIND_OLD_HOST || kind == KIND_GNSS || kind == KIND_RADIO;
}

int used_wrongly() {
    fprintf(stderr, "%s\n%s", ident, usage);
    return 2;
}

// The application that the run stops may hold the other end of the program's output, or its
// terminal. Its end must not end the run, nor the unit's scripts that the run starts.
void outlive_application() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGHUP, SIG_IGN);
}

// Resets what a careless starter may have passed on (blocked and ignored signals survive
// execve(2)), so that the alarm arrives, ended commands report their status, and no file that the
// run opens becomes one of its standard streams.
void reset_inherited_state() {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGCHLD, SIG_DFL);
    int opened;
    do {
        opened = open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    // This one lies above the standard streams, which are all open now.
    if (opened >= 0) {
        close(opened);
    }
}

} // namespace

int main(int argc, char **argv) {
    reset_inherited_state();
    // Print each line at once, so that it keeps its place among the lines of the commands.
    setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    if (argc == 2 && strcmp(argv[1], "--version") == 0) {
        printf("%s\n%s\n", ident, build_time);
        return 0;
    }
    if (argc == 2 && strcmp(argv[1], "--help") == 0) {
        printf("%s%s", usage, help);
        return 0;
    }
    if (argc < 3) {
        return used_wrongly();
    }
    const int kind = number_of(argv[1]);
    if (argc < 4 && is_checked_against_argument(kind)) {
        return used_wrongly();
    }
    outlive_application();
    update_run({kind, argv[2], argc < 4 ? nullptr : argv[3]});
}
