#pragma once

#include "unit/host_info.h"

#include <cstdio>

namespace renewer {

// Reads the unit's host record for a prompt. False, and "get_local_host_info() failure" on standard
// error, when it cannot be read.
inline bool read_local_host(host_info &host) {
    host = {};
    if (get_local_host_info(&host) == 1) {
        return true;
    }
    fputs("get_local_host_info() failure\n", stderr);
    return false;
}

} // namespace renewer
