#include "simulator/unit/namespaces.h"

#include "platform/owner.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <initializer_list>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

constexpr const char refused_to_user[] =
    "namespaces are refused here; root may use them, or they are allowed to all by "
    "sysctl kernel.unprivileged_userns_clone=1 (or user.max_user_namespaces=10000)";
constexpr const char refused_to_root[] =
    "namespaces are refused here, also to root; a container allows them with the capability "
    "SYS_ADMIN and without its seccomp and AppArmor profiles";

void write_text(const char *path, const std::string &text) {
    const renewer::owned_descriptor file(open(path, O_WRONLY | O_CLOEXEC));
    if (!file || write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        refuse(path);
    }
}

// In a user namespace a remount must keep the flags that the mount already has, so the usual
// combinations are tried one after the other.
void make_read_only(const std::string &target) {
    const unsigned long read_only = MS_REMOUNT | MS_BIND | MS_RDONLY;
    for (const unsigned long kept :
         std::initializer_list<unsigned long>{0, MS_NODEV | MS_NOSUID, MS_NOSUID, MS_NODEV}) {
        if (mount(nullptr, target.c_str(), nullptr, read_only | kept, nullptr) == 0) {
            return;
        }
    }
    refuse(target);
}

} // namespace

void refuse(const std::string &what) {
    fprintf(stderr, "unit: %s: %s\n", what.c_str(), strerror(errno));
    _exit(EXIT_FAILURE);
}

void enter_namespaces(int further_flags) {
    const uid_t user = getuid();
    const gid_t group = getgid();
    const bool own_users = unshare(CLONE_NEWUSER | CLONE_NEWNS | further_flags) == 0;
    // Where user namespaces are refused (in a chroot, by a container's profile), root does without.
    if (!own_users && (user != 0 || unshare(CLONE_NEWNS | further_flags) != 0)) {
        refuse(user == 0 ? refused_to_root : refused_to_user);
    }
    if (own_users) {
        // An ordinary user may only map its own ids, and the group only after setgroups is denied
        // (user_namespaces(7)).
        write_text("/proc/self/setgroups", "deny");
        write_text("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
        write_text("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    }
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        refuse("mounts of its own are refused here (the root of a chroot has to be a mount point: "
               "mount --bind DIR DIR)");
    }
}

void show(const std::string &root, const std::string &path) {
    const std::string target = root + path;
    if (fs::is_symlink(path)) {
        if (!fs::is_symlink(target)) {
            fs::copy_symlink(path, target);
        }
        return;
    }
    if (!fs::exists(path)) {
        return;
    }
    if (fs::is_directory(path)) {
        fs::create_directories(target);
    } else {
        fs::create_directories(fs::path(target).parent_path());
        renewer::owned_descriptor(open(target.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    }
    if (mount(path.c_str(), target.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
        refuse(target);
    }
}

void show_system(const std::string &root) {
    for (const char *path : {"/usr", "/bin", "/sbin", "/lib", "/lib64", "/lib32"}) {
        show(root, path);
        if (fs::exists(path) && !fs::is_symlink(path)) {
            make_read_only(root + path);
        }
    }
}

void show_devices(const std::string &root) {
    for (const char *path : {"/dev/null", "/dev/zero", "/dev/full", "/dev/urandom"}) {
        show(root, path);
    }
}

void change_root(const std::string &root) {
    if (chdir(root.c_str()) != 0 || chroot(".") != 0 || chdir("/") != 0) {
        refuse("change of root");
    }
}

} // namespace simulator
