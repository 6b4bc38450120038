#include "update/update_run.h"

#include "discovery/package_fit.h"
#include "platform/debug.h"
#include "platform/owner.h"
#include "platform/shell.h"
#include "power/bat.h"
#include "prompt/prompt_user.h"
#include "unit/host_info.h"
#include "unit/unit_model.h"
#include "update/install_step.h"
#include "update/package_removal.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/reboot.h>
#include <sys/wait.h>
#include <unistd.h>

namespace renewer {

namespace {

struct marker {
    const char *path;
    const char *touch;
};
constexpr marker over_marker = {"/tmp/update_over", "touch /tmp/update_over"};
constexpr marker flag_marker = {"/tmp/update_flag", "touch /tmp/update_flag"};
constexpr int lowest_bat_percent = 30; // without external power
constexpr useconds_t marker_poll_us = 100'000;

enum class decision { go_on, refuse, cancel };

bool update_over_exists() {
    return access(over_marker.path, F_OK) == 0;
}

// The rest of the unit has to find the marker even if the command could not make it. A marker that
// the command has made may be gone already, because it has been acknowledged; so it must not be
// made again.
void create(const marker &which) {
    if (shell(which.touch) != 0) {
        const owned_descriptor made(
            open(which.path, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, 0666));
    }
}

void create_update_over() {
    create(over_marker);
    shell("sync");
}

bool path_is_allowed(const char *path) {
    if (strncmp(path, "/mnt", 4) != 0) {
        return true;
    }
    puts("package path mnt  not allow\r");
    return false;
}

void stop_application() {
    shell("killall S080_application");
    shell("/etc/init.d/S080_application stop");
}

decision check_power(const host_info &host) {
    const unit_model *const model = model_of(host);
    if (model == nullptr || model->power == nullptr) {
        return decision::go_on;
    }
    printf("%s=%d\n", model->power->name, model->power->machine_type);
    bat_info power = {};
    // The result is that of the last reading alone. A supply that cannot be read measures 0 V.
    get_bat_percent(model->power->machine_type, &power);
    printf("ext!!!!!!!!!!!!! power %d bat1 %d \n", power.ext_power, power.bat1_percent);
    if (power.ext_power != 0 || power.bat1_percent >= lowest_bat_percent) {
        return decision::go_on;
    }
    prompt_user(PROMPT_NOTALLOW);
    debug(1, " no ext power and baterry low , cannot  update program\n");
    shell("sync");
    return decision::refuse;
}

// A package with "firmware" in its path, such as one on the unit's own storage, is installed
// without a question.
decision ask_user(const char *path) {
    if (strstr(path, "firmware") != nullptr) {
        return decision::go_on;
    }
    debug(1, "coming................");
    fflush(stdout); // the line has no newline yet, and the answer may take minutes
    if (prompt_user(PROMPT_CONFIRM) == 1) {
        return decision::go_on;
    }
    debug(1, "user canceled  update program\n");
    prompt_user(PROMPT_NOTALLOW);
    return decision::cancel;
}

// Everything that is decided before the unit is changed.
decision prepare(const update_arguments &arguments) {
    host_info host;
    if (!read_host_or_report(host)) {
        return decision::refuse;
    }
    if (!path_is_allowed(arguments.path) ||
        package_fits(arguments.kind, arguments.expected, host) != 1) {
        return decision::refuse;
    }
    // From here on the run needs the keys and the panel for itself.
    stop_application();
    if (prompt_user(PROMPT_INIT) != 1) {
        debug(1, "Update status init err\n");
        return decision::refuse;
    }
    if (const decision power = check_power(host); power != decision::go_on) {
        return power;
    }
    debug(5, "str path=%s\n", arguments.path);
    if (const decision answer = ask_user(arguments.path); answer != decision::go_on) {
        return answer;
    }
    return prompt_user(PROMPT_UPDATING) == 1 ? decision::go_on : decision::refuse;
}

int install(const update_arguments &arguments) {
    const bool is_host = arguments.kind == KIND_OLD_HOST || arguments.kind == KIND_NEW_HOST;
    debug(2, "updating system ...\n");
    shell("sync");
    return do_update(arguments.path, is_host ? host_time_limit : no_time_limit);
}

void on_signal_to_end(int) {}

// A shutdown script that ends all processes must not end the run before its last commands. Handlers
// rather than SIG_IGN, because the commands would inherit that; SIGHUP is ignored already.
void outlive_shutdown() {
    struct sigaction action = {};
    action.sa_handler = on_signal_to_end;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
}

// A command that was killed together with its shell has worked: the shutdown is ending all
// processes.
bool was_refused(int status) {
    return status == -1 || (WIFEXITED(status) && WEXITSTATUS(status) != 0);
}

[[noreturn]] void reboot_unit() {
    outlive_shutdown();
    shell("/etc/init.d/rc.stop");
    shell("/etc/init.d/umount_all");
    shell("sync");
    if (was_refused(shell("reboot"))) {
        // The command is missing or has failed. The system call restarts at once and does not sync
        // (reboot(2)).
        sync();
        reboot(RB_AUTOBOOT);
    }
    // The command has only begun the shutdown, which does not need this process.
    exit(1);
}

[[noreturn]] void end_cancelled() {
    create_update_over();
    sleep(1);
    exit(0);
}

[[noreturn]] void end_successful(const char *path) {
    sleep(10);
    prompt_user(PROMPT_SUCCESS);
    create(flag_marker);
    debug(5, "update success!\n");
    shell("echo update_success >> /data/app/log/update.log");
    remove_package(path);
    create_update_over();
    shell("echo rm_file_success >> /data/app/log/update.log");
    sleep(1);
    for (;;) {
        shell("echo check_update_over >> /data/app/log/update.log");
        if (!update_over_exists()) {
            break;
        }
        usleep(marker_poll_us);
    }
    reboot_unit();
}

[[noreturn]] void end_failed(const char *path) {
    create(flag_marker);
    prompt_user(PROMPT_FAILURE);
    remove_package(path);
    create_update_over();
    sleep(1);
    while (update_over_exists()) {
        usleep(marker_poll_us);
    }
    reboot_unit();
}

} // namespace

void sig_file() {
    create_update_over();
    sleep(1);
    while (update_over_exists()) {
        sleep(2);
    }
    exit(0);
}

void update_run(const update_arguments &arguments) {
    debug(5, "this is renewer!\n");
    switch (prepare(arguments)) {
    case decision::refuse:
        sig_file();
    case decision::cancel:
        end_cancelled();
    case decision::go_on:
        break;
    }
    if (install(arguments) != 1) {
        end_failed(arguments.path);
    }
    end_successful(arguments.path);
}

} // namespace renewer
