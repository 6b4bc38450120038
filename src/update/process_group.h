#pragma once

#include <sys/types.h>

namespace renewer {

// Whether a process of this process group is alive; one that has ended and waits to be collected
// is not. Read from "/proc/<pid>/stat" (proc(5)); true when that cannot be read.
bool process_group_runs(pid_t group);

} // namespace renewer
