#include "simulator/unit_root.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simulator {

namespace {

// Its presence says that the process is in a unit's root.
constexpr const char inside_mark[] = "/.unit";

[[noreturn]] void fail(const char *what) {
    fprintf(stderr, "unit root: %s: %s\n", what, strerror(errno));
    exit(EXIT_FAILURE);
}

void write_text(const char *path, const std::string &text) {
    const int file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0 || write(file, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        fail(path);
    }
    close(file);
}

// A user may map only its own number in a user namespace (user_namespaces(7)).
void become_root_of_own_namespaces() {
    const uid_t user = getuid();
    const gid_t group = getgid();
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        fail("this system does not allow user namespaces");
    }
    write_text("/proc/self/setgroups", "deny");
    write_text("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    write_text("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        fail("private mounts");
    }
}

// Shows a directory of the desk in the unit; a link of the desk is copied as a link.
void show(const std::string &root, const std::string &path) {
    const std::string target = root + path;
    struct stat about;
    if (lstat(path.c_str(), &about) != 0) {
        return;
    }
    if (S_ISLNK(about.st_mode)) {
        char destination[256] = {};
        if (readlink(path.c_str(), destination, sizeof(destination) - 1) < 0 ||
            symlink(destination, target.c_str()) != 0) {
            fail(target.c_str());
        }
        return;
    }
    if (S_ISDIR(about.st_mode)) {
        mkdir(target.c_str(), 0755);
    } else {
        close(open(target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    }
    if (mount(path.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
        fail(target.c_str());
    }
}

// Keeps what is shown of the desk from being written to. Flags that a mount already carries may
// not be dropped in a user namespace, so the usual ones are named too.
void protect(const std::string &target) {
    for (const unsigned long kept :
         {0ul, static_cast<unsigned long>(MS_NODEV | MS_NOSUID),
          static_cast<unsigned long>(MS_NOSUID), static_cast<unsigned long>(MS_NODEV)}) {
        if (mount(nullptr, target.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY | kept,
                  nullptr) == 0) {
            return;
        }
    }
    fail(target.c_str());
}

} // namespace

void enter_unit_root() {
    if (access(inside_mark, F_OK) == 0) {
        return;
    }
    char here[4096];
    if (getcwd(here, sizeof(here)) == nullptr) {
        fail("working directory");
    }
    become_root_of_own_namespaces();

    // The mount hides the directory it lies on from this process alone.
    const std::string root = "/mnt";
    if (mount("unit", root.c_str(), "tmpfs", 0, "mode=755") != 0) {
        fail("root in memory");
    }
    for (const char *path : {"/usr", "/bin", "/sbin", "/lib", "/lib64", "/lib32"}) {
        show(root, path);
        struct stat about;
        if (lstat((root + path).c_str(), &about) == 0 && S_ISDIR(about.st_mode)) {
            protect(root + path);
        }
    }
    for (const char *path : {"/dev", "/proc", "/sys", "/etc", "/tmp", "/run", "/update", "/data",
                             "/firmware", "/reserve", "/media", "/mnt"}) {
        mkdir((root + path).c_str(), 0755);
    }
    for (const char *path : {"/dev/null", "/dev/zero", "/dev/full", "/dev/urandom", "/proc"}) {
        show(root, path);
    }
    // Where the tests were built and started: readable at its own path.
    for (const char *end = strchr(here + 1, '/'); end != nullptr; end = strchr(end + 1, '/')) {
        mkdir((root + std::string(here, static_cast<size_t>(end - here))).c_str(), 0755);
    }
    show(root, here);
    if (chdir(root.c_str()) != 0 || chroot(".") != 0 || chdir("/") != 0) {
        fail("change of root");
    }
    close(open(inside_mark, O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
}

} // namespace simulator
