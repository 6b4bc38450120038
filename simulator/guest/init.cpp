// The first process of a unit that runs on a kernel of its own. It creates the devices that the
// machine lacks, records what happens, plays the user and the rest of the unit as "/etc/story"
// says, and hands over the results when the unit reboots. The scripts "/etc/storage" and
// "/etc/after", if present, run before and after the story.

#include "platform/owner.h"
#include "simulator/guest/story.h"
#include "simulator/unit/failure.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sched.h>
#include <span>
#include <string_view>
#include <sys/mount.h>
#include <sys/reboot.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace simulator;

namespace {

struct mount_point {
    const char *type, *target;
};

constexpr mount_point mounts[] = {
    {"proc", "/proc"},
    {"sysfs", "/sys"},
    {"devtmpfs", "/dev"},
    {"tmpfs", "/tmp"},
};

// Plain files replace the drivers that this machine lacks.
constexpr mount_point stand_ins[] = {
    {"tmpfs", "/sys/bus/iio/devices"},
    {"tmpfs", "/sys/kernel/debug"},
};

int run(const std::string &command) {
    return system(command.c_str());
}

void mount_all(std::span<const mount_point> list) {
    for (const auto &[type, target] : list) {
        if (mount(type, target, type, 0, nullptr) != 0) {
            fail(target);
        }
    }
}

void set_up() {
    mount_all(mounts);
    run("busybox --install -s");
    run("while read module; do insmod /lib/modules/$module; done < /etc/modules");
    mount_all(stand_ins);
    run("cp -a /unit/. /");
    run("[ ! -e /etc/storage ] || sh /etc/storage");
}

// Gives this process precedence over all others; its children start with normal scheduling.
void run_before_others() {
    sched_param parameters = {};
    parameters.sched_priority = 1;
    if (sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) != 0) {
        fail("sched_setscheduler");
    }
}

// The unit's main application only has to exist; it is this program under another name.
bool is_application(const char *name) {
    return std::string_view(name).ends_with("S080_application");
}

} // namespace

int main(int, char **arguments) {
    if (is_application(arguments[0])) {
        pause();
    }
    int how = RB_POWER_OFF;
    try {
        set_up();
        run_before_others();
        how = play_story("/etc/story", "/result") == ending::reboot ? RB_AUTOBOOT : RB_POWER_OFF;
        run("[ ! -e /etc/after ] || sh /etc/after");
        run("tar c -C / result data firmware reserve update tmp > $(ls /dev/vport*)");
    } catch (const std::exception &failure) {
        fprintf(stderr, "init: %s\n", failure.what());
    }
    sync();
    reboot(how);
}
