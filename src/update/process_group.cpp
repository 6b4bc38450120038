#include "update/process_group.h"

#include "platform/owner.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace renewer {

namespace {

// Whether this process is alive and in the group. The second field of the file, the name, may
// contain anything, even a closing bracket, so the text after the last one is parsed (proc(5),
// /proc/pid/stat).
bool is_alive_in(const char *process, pid_t group) {
    char path[64];
    snprintf(path, sizeof(path), "/proc/%.32s/stat", process);
    const owned_file file(fopen(path, "re"));
    char line[512] = {};
    if (file == nullptr || fgets(line, sizeof(line), file.get()) == nullptr) {
        return false; // it has ended since it was listed
    }
    const char *rest = strrchr(line, ')');
    char state = 0;
    int parent = 0;
    int its_group = 0;
    if (rest == nullptr || sscanf(rest, ") %c %d %d", &state, &parent, &its_group) != 3) {
        return false;
    }
    // A zombie (Z) or dead (X) process runs no more; only its parent has not collected it yet.
    return its_group == group && state != 'Z' && state != 'X';
}

} // namespace

group_state state_of_group(pid_t group) {
    const owned_directory processes(opendir("/proc"));
    if (processes == nullptr) {
        return group_state::unknown;
    }
    bool any = false;
    while (const dirent *entry = readdir(processes.get())) {
        const bool is_process = isdigit(static_cast<unsigned char>(entry->d_name[0])) != 0;
        any = any || is_process;
        if (is_process && is_alive_in(entry->d_name, group)) {
            return group_state::running;
        }
    }
    // Where proc is not mounted, "/proc" is an empty directory and proves nothing.
    return any ? group_state::ended : group_state::unknown;
}

} // namespace renewer
