#include "simulator/unit/unit_root.h"

#include "simulator/unit/namespaces.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/mount.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// Exists if the process is already in a unit's root.
constexpr const char inside_mark[] = "/.unit";

// Where the root is assembled. Any directory will do: only this process sees the mount.
constexpr const char root[] = "/mnt";

} // namespace

void enter_unit_root() {
    if (fs::exists(inside_mark)) {
        return;
    }
    const fs::path started_in = fs::current_path();
    enter_namespaces(0);
    if (mount("unit", root, "tmpfs", 0, "mode=755") != 0) {
        refuse("root in memory");
    }
    for (const char *path : {"/dev", "/sys", "/etc", "/tmp", "/run", "/update", "/data",
                             "/firmware", "/reserve", "/media", "/mnt"}) {
        fs::create_directories(root + std::string(path));
    }
    show_system(root);
    show_devices(root);
    show(root, "/proc");
    show(root, started_in);
    change_root(root);
    std::ofstream{inside_mark};
}

} // namespace simulator
