#pragma once

#include <sys/types.h>

namespace renewer {

enum class group_state {
    ended,
    running,
    unknown, // "/proc" cannot be read, or nothing is mounted there
};

// Whether a process of this process group is alive; one that has ended and waits to be collected
// is not. Read from "/proc/<pid>/stat" (proc(5)).
group_state state_of_group(pid_t group);

} // namespace renewer
