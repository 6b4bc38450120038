#include "update/self_copy.h"

#include "tests/support/files.h"
#include "tests/support/small_disk.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <random>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace renewer;

namespace {

namespace fs = std::filesystem;

constexpr const char installed[] = "/data/sbin/renewer";
constexpr const char fallback[] = "/data/sbin/update/renewer";

std::string old_updater; // what is installed before
std::string new_updater; // what the update brings
std::string durable_steps;

std::string which(const char *path) {
    const std::string content = get_file(path);
    return !fs::exists(path)        ? "none"
           : content == new_updater ? "new"
           : content == old_updater ? "old"
                                    : "torn";
}

void note(const char *step, int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    durable_steps += std::string(step) + " " + fs::read_symlink(link).string() + "\n";
}

} // namespace

extern "C" int syncfs(int descriptor) noexcept {
    note("flush all of", descriptor);
    durable_steps += which(fallback) + ", then " + which(installed) + "\n";
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "syncfs"))(descriptor);
}

extern "C" int fsync(int descriptor) {
    note("flush", descriptor);
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"))(descriptor);
}

extern "C" int rename(const char *from, const char *to) noexcept {
    durable_steps +=
        std::string("rename to ") + to + " with its mode " +
        std::to_string(fs::status(from).permissions() == fs::status(to).permissions()) + "\n";
    return reinterpret_cast<int (*)(const char *, const char *)>(dlsym(RTLD_NEXT, "rename"))(from,
                                                                                             to);
}

namespace {

std::string random_bytes(size_t kib) {
    static std::mt19937 numbers(1);
    std::string bytes(kib * 1024, '\0');
    for (char &byte : bytes) {
        byte = static_cast<char>(numbers());
    }
    return bytes;
}

pid_t run_in_background(const char *path) {
    const pid_t child = fork();
    if (child == 0) {
        execl(path, path, "100", nullptr);
        _exit(1);
    }
    usleep(50'000); // until it is executed
    return child;
}

constexpr const char first_flush[] = "flush all of /data/sbin/update\nnew, then old\n";
constexpr const char replaced_whole[] = "flush /data/sbin/renewer.new\n"
                                        "rename to /data/sbin/renewer with its mode 1\n"
                                        "flush /data/sbin\n";
constexpr const char half_a_copy[] = "#!/bin/sh\nhead -c 5000 \"$1\" > \"$2\"; exit 1\n";

TEST(self_copy, both_are_the_new_updater_or_what_they_were) {
    const size_t busy = get_file("/bin/sleep").size() / 1024;
    const struct {
        const char *what;
        size_t disk; // in KiB, also all below
        size_t brought;
        bool running;
        size_t is_fallback; // size of the fallback before, 0 for none
        const char *cp;     // in place of the command, null for none
        const char *installed_is;
        const char *fallback_is;
        std::string steps; // empty: any
    } cases[] = {
        {"nothing in the way", 4000, 200, false, 9, nullptr, "new", "new", first_flush},
        {"runs", 4000, 200, true, 0, nullptr, "new", "new",
         std::string(first_flush) + replaced_whole},
        {"commands that end half-way", 4000, 200, false, 9, half_a_copy, "new", "new", ""},
        {"commands that do nothing", 4000, 200, true, 9, "#!/bin/sh\n", "new", "new", ""},
        {"runs, no room, for the old one neither", busy + 20, 200, true, 0, nullptr, "old", "none",
         ""},
        {"room for one", 400, 250, false, 60, nullptr, "new", "old", ""},
        {"room for none", 400, 500, false, 100, nullptr, "old", "old", ""},
    };
    for (const auto &[what, disk, brought, running, is_fallback, cp, installed_is, fallback_is,
                      steps] : cases) {
        SCOPED_TRACE(what);
        const small_disk data(disk * 1024, "/data");
        old_updater = running ? get_file("/bin/sleep") : random_bytes(200);
        new_updater = random_bytes(brought);
        put_file(installed, old_updater);
        fs::permissions(installed, static_cast<fs::perms>(0751));
        put_file("/firmware/renewer.bin", new_updater);
        if (is_fallback > 0) {
            put_file(fallback, old_updater.substr(0, is_fallback * 1024));
            put_file("/data/sbin/update/renewer.new", "of a run that was cut off");
        }
        put_file("/data/sbin/renewer.new", "of a run that was cut off");
        put_file("/tmp/bin/cp", cp == nullptr ? "" : cp);
        fs::permissions("/tmp/bin/cp", static_cast<fs::perms>(cp == nullptr ? 0 : 0755));
        setenv("PATH", "/tmp/bin:/usr/bin:/bin", 1);
        const pid_t program = running ? run_in_background(installed) : 0;
        durable_steps.clear();

        remove_unfinished_own_update();
        copy_own_update();
        EXPECT_EQ(which(installed), installed_is);
        const std::string before = old_updater.substr(0, is_fallback * 1024);
        EXPECT_EQ(*fallback_is == 'o' && get_file(fallback) == before ? "old" : which(fallback),
                  fallback_is);
        EXPECT_EQ(fs::status(installed).permissions(), static_cast<fs::perms>(0751));
        EXPECT_FALSE(fs::exists("/data/sbin/renewer.new"));
        EXPECT_FALSE(fs::exists("/data/sbin/update/renewer.new"));
        if (!steps.empty()) {
            EXPECT_EQ(durable_steps, steps);
        }
        if (program > 0) {
            kill(program, SIGKILL);
            waitpid(program, nullptr, 0);
        }
    }
}

} // namespace
