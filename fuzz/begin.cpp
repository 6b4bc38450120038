#include "simulator/unit/unit_root.h"

#include <cstdio>
#include <filesystem>

extern "C" int LLVMFuzzerInitialize(int *, char ***);

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    simulator::enter_unit_root();
    for (const char *directory : {"/media/sda1", "/update/hw", "/tmp/out", "/dev/input"}) {
        std::filesystem::create_directories(directory);
    }
    return freopen("/dev/null", "w", stdout) == nullptr ? 1 : 0;
}
