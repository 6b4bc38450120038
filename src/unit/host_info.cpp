#include "unit/host_info.h"

#include "platform/owner.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace renewer {

int get_local_host_info(host_info *record) {
    if (record == nullptr) {
        return 0;
    }
    const owned_descriptor file(open("/update/hw/sys", O_RDONLY | O_CLOEXEC));
    if (!file) {
        perror("open sys err");
        return 0;
    }
    // A file that opens but cannot be read leaves the record empty, as an empty one does.
    *record = {};
    [[maybe_unused]] const ssize_t taken = read(file.get(), record, sizeof(*record));
    return 1;
}

bool read_host_or_report(host_info &host) {
    if (get_local_host_info(&host) == 1) {
        return true;
    }
    fputs("get_local_host_info() failure\n", stderr);
    return false;
}

bool host_pn_is(const host_info &host, size_t first, char a, char b) {
    return a != 0 && b != 0 && host.pn[first] == a && host.pn[first + 1] == b;
}

} // namespace renewer
