#include "update/self_copy.h"

#include "platform/owner.h"
#include "platform/shell.h"
#include "platform/whole_file.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace renewer {

namespace {

constexpr const char carried_path[] = "/firmware/renewer.bin";
constexpr const char installed_path[] = "/data/sbin/renewer";
constexpr const char fallback_directory[] = "/data/sbin/update";
constexpr const char fallback_path[] = "/data/sbin/update/renewer";

// One of the two copies, and its content before the commands: a command that fails halfway has
// destroyed it, and there may be no room for the new one.
struct own_copy {
    const char *path;
    bool existed;
    owned_descriptor before; // in memory; empty when there was none or no memory for it
};

own_copy remember(const char *path) {
    return {path, access(path, F_OK) == 0, copy_in_memory(path)};
}

void run_commands() {
    if (access(fallback_directory, F_OK) == 0) {
        puts("/data/sbin/update already exist\r");
    } else {
        shell("mkdir -p /data/sbin/update");
    }
    shell("cp /firmware/renewer.bin /data/sbin/update/renewer");
    // One copy must be on the medium before cp truncates the other one.
    flush_file_system(fallback_directory);
    shell("cp /firmware/renewer.bin /data/sbin/renewer");
    shell("sync");
}

// Whether the copy is neither the new one nor known to be the previous one.
bool is_torn(const own_copy &copy, int carried) {
    if (holds_same(copy.path, carried)) {
        return false;
    }
    return copy.before ? !holds_same(copy.path, copy.before.get()) : !copy.existed;
}

void make_whole(const own_copy &copy, const own_copy &other, int carried) {
    // It is the new one, or becomes it, or at least is still the old one.
    if (holds_same(copy.path, carried) || replace_file(copy.path, carried) ||
        !is_torn(copy, carried)) {
        return;
    }
    // Torn copies are useless; emptying them makes room.
    for (const own_copy *torn : {&copy, &other}) {
        if (is_torn(*torn, carried)) {
            [[maybe_unused]] const int emptied = truncate(torn->path, 0);
        }
    }
    if (!replace_file(copy.path, carried) && !replace_file(copy.path, copy.before.get())) {
        // A copy that is missing is noticed; one that is torn would be started.
        unlink(copy.path);
    }
}

} // namespace

void copy_own_update() {
    const own_copy installed = remember(installed_path);
    const own_copy fallback = remember(fallback_path);
    run_commands();
    // O_NONBLOCK: a FIFO of this name must not make the run wait for a writer.
    const owned_descriptor carried(open(carried_path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (carried) {
        make_whole(installed, fallback, carried.get());
        make_whole(fallback, installed, carried.get());
    }
}

void remove_unfinished_own_update() {
    remove_unfinished(installed_path);
    remove_unfinished(fallback_path);
}

} // namespace renewer
