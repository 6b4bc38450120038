#include "simulator/unit/installation.h"

#include "simulator/boundary/protocol.h"
#include "simulator/unit/parts.h"

#include <cstdlib>

namespace simulator {

namespace fs = std::filesystem;

namespace {

constexpr const char boundary[] = "simulator/boundary/boundary.so";
constexpr const char program_path[] = "/.simulator/program";

// Where a unit has stand-ins; all are one program under several names.
constexpr const char *stand_ins[] = {"/.simulator/bin/S080_application", "/.simulator/bin/reboot",
                                     "/etc/init.d/S080_application", "/etc/init.d/rc.stop",
                                     "/etc/init.d/umount_all"};

void copy_executable(const fs::path &from, const fs::path &to) {
    fs::create_directories(to.parent_path());
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    fs::permissions(to, static_cast<fs::perms>(0755));
}

// The build directory for a unit of another architecture, whose programs replace those of the
// desk's own build; null if none is named (see `unit::run`).
const char *foreign_build() {
    return getenv("RENEWER_FOREIGN_BUILD");
}

fs::path as_observed(const fs::path &place) {
    const char *foreign = foreign_build();
    return foreign == nullptr ? part(place) : foreign / place;
}

} // namespace

void install_simulator(const fs::path &root, const fs::path &program) {
    for (const char *path : stand_ins) {
        if (!fs::exists(below(root, path))) {
            copy_executable(part("simulator/unit/stand_in"), below(root, path));
        }
    }
    // ld.so(8) replaces $LIB by the library directory of the process's own architecture.
    copy_executable(part(boundary),
                    root / ".simulator/lib" / SIMULATOR_ARCHITECTURE / "boundary.so");
    if (foreign_build() != nullptr) {
        copy_executable(as_observed(boundary),
                        root / ".simulator/lib/arm-linux-gnueabihf/boundary.so");
    }
    copy_executable(as_observed(program.empty() ? updater_place : place_in_build(program)),
                    below(root, program_path));
}

std::vector<std::string> environment_of(const unit_plan &plan) {
    std::vector<std::string> result = {
        "PATH=/.simulator/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", "HOME=/",
        "LD_PRELOAD=/.simulator/$LIB/boundary.so",
        // The boundary is loaded ahead of the sanitizer's library, which the sanitizer would
        // refuse.
        "ASAN_OPTIONS=verify_asan_link_order=0:log_path=/.simulator/report",
        "UBSAN_OPTIONS=log_path=/.simulator/report",
        // After a fork the child reports its parent's ended threads as never joined.
        "TSAN_OPTIONS=report_thread_leaks=0:log_path=/.simulator/report",
        std::string(speed_variable) + "=" + std::to_string(plan.clock_speed)};
    for (const auto &[name, value] : plan.environment) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<std::string> command_of(const std::vector<std::string> &arguments) {
    std::vector<std::string> command;
    if (const char *runner = getenv("RENEWER_RUNNER")) {
        command.emplace_back(runner);
    }
    command.emplace_back(program_path);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

} // namespace simulator
