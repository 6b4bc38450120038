// Runs a command in an empty unit's root: in_unit_root COMMAND [ARGUMENT...]

#include "simulator/unit/namespaces.h"
#include "simulator/unit/unit_root.h"

#include <cstdio>
#include <unistd.h>

int main(int argc, char **argv) {
    if (argc < 2) {
        fputs("usage: in_unit_root COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    simulator::enter_unit_root();
    execvp(argv[1], argv + 1);
    simulator::refuse(argv[1]);
}
