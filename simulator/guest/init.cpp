// The first process of a unit that is played on a kernel of its own: makes the devices that the
// machine has not got, tells what happens, plays the user and the rest of the unit from
// "/etc/story", and hands everything over when the unit reboots. The scripts
// "/etc/storage" and "/etc/after", where there are such, run before the story and after it.

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

// Where the unit has drivers that this machine has not, plain files stand in.
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

// Ahead of every other process; what it starts is as usual.
void look_first() {
    sched_param parameters = {};
    parameters.sched_priority = 1;
    if (sched_setscheduler(0, SCHED_FIFO | SCHED_RESET_ON_FORK, &parameters) != 0) {
        fail("sched_setscheduler");
    }
}

// The unit's main application, which only has to be there; it is this program under another name.
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
        look_first();
        how = play_story("/etc/story", "/result") == ending::reboot ? RB_AUTOBOOT : RB_POWER_OFF;
        run("[ ! -e /etc/after ] || sh /etc/after");
        run("tar c -C / result data firmware reserve update tmp > $(ls /dev/vport*)");
    } catch (const std::exception &failure) {
        fprintf(stderr, "init: %s\n", failure.what());
    }
    sync();
    reboot(how);
}
