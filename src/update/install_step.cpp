#include "update/install_step.h"

#include "package/common.h"
#include "platform/files.h"
#include "platform/shell.h"
#include "update/self_copy.h"
#include "update/timed_command.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace renewer {

namespace {

constexpr const char pack_version_path[] = "/tmp/pack_version";
constexpr const char data_version_path[] = "/tmp/data_version";

// The first line of a version file: "renewer_version:v1.1.4".
constexpr const char version_prefix[] = "renewer_version:v";
constexpr size_t version_size = 32;

// The prefix is skipped by its length, whatever it says; the version of a line that is not longer
// is empty. A newline within the buffer stays part of the version.
int read_version(const char *path, char (&version)[version_size]) {
    const owned_file file = open_for_reading(path);
    if (file == nullptr) {
        perror("fopen");
        return 0;
    }
    char line[version_size] = {};
    if (fgets(line, sizeof(line), file.get()) == nullptr) {
        memset(line, 0, sizeof(line));
    }
    snprintf(version, sizeof(version), "%s", line + strlen(version_prefix));
    return 1;
}

int copy_own_update_unless_older() {
    puts("this is new version checkupdate\r");
    char pack_version[version_size] = {};
    char data_version[version_size] = {};
    if (read_version(pack_version_path, pack_version) == 0 ||
        read_version(data_version_path, data_version) == 0) {
        return 0;
    }
    printf("pack version %s\n", pack_version);
    printf("data version %s\n", data_version);
    // An equal version is copied as well, which mends a damaged copy.
    if (edition_compare(pack_version, data_version) >= 0) {
        copy_own_update();
    }
    return 1;
}

} // namespace

int do_update([[maybe_unused]] const char *path, int timeout) {
    // An interrupted run may have left them, and what is copied below needs their room.
    remove_unfinished_own_update();
    shell("sync");
    if (shell("cp -drf /firmware/update/* /firmware/") != 0) {
        return 0;
    }
    printf("wait %d sec...\n", timeout);
    shell("sync");
    // No limit is -1, which becomes 136 years.
    if (fork_exec_timeout("/firmware/install.sh 1>/data/app/log/update.log 2>&1", "install.sh",
                          static_cast<unsigned>(timeout), install_tries) != 0) {
        return 0;
    }
    // Without a version to compare, the updater of this update is installed in any case.
    if (access(pack_version_path, F_OK) != 0) {
        copy_own_update();
        return 1;
    }
    return copy_own_update_unless_older();
}

} // namespace renewer
