#include "simulator/faults/observed_call.h"

#include "platform/owner.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/syscall.h>
#include <sys/uio.h>

namespace simulator {

namespace {

enum class subject_kind { none, path, path_at, descriptor, target_of_copy, memory };

struct known_call {
    int number;
    const char *name;
    subject_kind subject;
    bool changes;
    bool halves;
    std::vector<int> errors;
};

using enum subject_kind;

// Calls that have different names on 32-bit ARM (arch/arm/tools/syscall.tbl).
#ifdef __arm__
#define SYS_newfstatat SYS_fstatat64
#define SYS_mmap SYS_mmap2
#endif

const std::vector<known_call> known_calls = {
    {SYS_openat, "openat", path_at, false, false, {EIO}},
    {SYS_read, "read", descriptor, false, false, {EIO}},
    {SYS_getdents64, "getdents64", descriptor, false, false, {EIO}},
    {SYS_newfstatat, "newfstatat", path_at, false, false, {EIO}},
    {SYS_access, "access", path, false, false, {EIO}},
    {SYS_faccessat2, "faccessat2", path_at, false, false, {EIO}},
    {SYS_write, "write", descriptor, true, true, {ENOSPC, EIO}},
    {SYS_copy_file_range, "copy_file_range", target_of_copy, true, true, {ENOSPC, EIO}},
    {SYS_sendfile, "sendfile", descriptor, true, true, {ENOSPC, EIO}},
    {SYS_ftruncate, "ftruncate", descriptor, true, false, {ENOSPC, EIO}},
    {SYS_truncate, "truncate", path, true, false, {EIO}},
    {SYS_mkdir, "mkdir", path, true, false, {ENOSPC, EIO}},
    {SYS_mkdirat, "mkdirat", path_at, true, false, {ENOSPC, EIO}},
    {SYS_rename, "rename", path, true, false, {ENOSPC, EIO}},
    {SYS_renameat2, "renameat2", path_at, true, false, {ENOSPC, EIO}},
    {SYS_unlink, "unlink", path, true, false, {EIO}},
    {SYS_unlinkat, "unlinkat", path_at, true, false, {EIO}},
    {SYS_fchmod, "fchmod", descriptor, true, false, {EIO}},
    {SYS_fchmodat, "fchmodat", path_at, true, false, {EIO}},
    {SYS_utimensat, "utimensat", path_at, true, false, {EIO}},
    {SYS_fsync, "fsync", descriptor, true, false, {EIO}},
    {SYS_fdatasync, "fdatasync", descriptor, true, false, {EIO}},
    {SYS_syncfs, "syncfs", descriptor, true, false, {EIO}},
    {SYS_sync, "sync", none, true, false, {}},
    {SYS_clone, "clone", none, false, false, {EAGAIN, ENOMEM}},
    {SYS_clone3, "clone3", none, false, false, {EAGAIN, ENOMEM}},
    {SYS_vfork, "vfork", none, false, false, {EAGAIN, ENOMEM}},
    {SYS_fork, "fork", none, false, false, {EAGAIN, ENOMEM}},
    {SYS_execve, "execve", path, false, false, {ENOMEM, EIO}},
    {SYS_pipe2, "pipe2", none, false, false, {EMFILE}},
    {SYS_memfd_create, "memfd_create", none, false, false, {ENOMEM}},
    {SYS_mmap, "mmap", memory, false, false, {ENOMEM}},
};

const known_call &find_call(int number) {
    return *std::find_if(known_calls.begin(), known_calls.end(),
                         [number](const known_call &call) { return call.number == number; });
}

std::string process_file(pid_t process, const std::string &name) {
    return "/proc/" + std::to_string(process) + "/" + name;
}

std::string command_line(pid_t process) {
    std::ifstream file(process_file(process, "cmdline"), std::ios::binary);
    std::string line{std::istreambuf_iterator<char>(file), {}};
    std::replace(line.begin(), line.end(), '\0', ' ');
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

size_t read_memory(pid_t process, uint64_t address, void *to, size_t size) {
    const iovec here = {to, size};
    const iovec there = {reinterpret_cast<void *>(address), size};
    const ssize_t length = process_vm_readv(process, &here, 1, &there, 1, 0);
    return length < 0 ? 0 : static_cast<size_t>(length);
}

std::string text_at(pid_t process, uint64_t address) {
    char text[4096] = {};
    // Not beyond the page: the next one may not be mapped.
    read_memory(process, address, text, std::min<size_t>(sizeof(text) - 1, 4096 - address % 4096));
    return text;
}

std::string descriptor_path(pid_t process, uint64_t descriptor) {
    char path[4096];
    const std::string link = process_file(process, "fd/" + std::to_string(descriptor));
    const ssize_t length = readlink(link.c_str(), path, sizeof(path));
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

std::string path_at_of(pid_t process, const seccomp_data &data) {
    const std::string text = text_at(process, data.args[1]);
    if (text.starts_with('/') || static_cast<int>(data.args[0]) == AT_FDCWD) {
        return text;
    }
    const std::string directory = descriptor_path(process, data.args[0]);
    return text.empty() ? directory : directory + "/" + text;
}

std::string subject_of(const known_call &call, pid_t process, const seccomp_data &data) {
    switch (call.subject) {
    case path:
        return text_at(process, data.args[0]);
    case path_at:
        return path_at_of(process, data);
    case descriptor:
        return descriptor_path(process, data.args[0]);
    case target_of_copy:
        return descriptor_path(process, data.args[2]);
    case none:
    case memory:
        break;
    }
    return "";
}

bool begins_with_one_of(const std::string &text, std::initializer_list<const char *> beginnings) {
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&text](const char *beginning) { return text.starts_with(beginning); });
}

bool outlives_reboot(const std::string &path) {
    return begins_with_one_of(path, {"/data", "/firmware", "/update", "/reserve", "/media"});
}

// Files that the loader reads in every dynamic program, and the channels of its output.
bool is_irrelevant(const std::string &subject) {
    return begins_with_one_of(subject, {"/lib", "/usr/lib", "/etc/ld.so", "/.simulator", "/proc",
                                        "/dev/null", "socket:", "pipe:", "anon_inode"});
}

bool opens_for_change(const known_call &call, const seccomp_data &data) {
    return call.number == SYS_openat && (data.args[2] & (O_CREAT | O_TRUNC)) != 0;
}

bool is_program(const std::string &who) {
    return who.find("renewer ") != std::string::npos && !who.starts_with("sh ") &&
           !who.starts_with("cp ");
}

} // namespace

const std::vector<int> &observed_numbers() {
    static const std::vector<int> numbers = [] {
        std::vector<int> result;
        for (const known_call &call : known_calls) {
            result.push_back(call.number);
        }
        return result;
    }();
    return numbers;
}

// After an exec it counts as another process.
call_book::process &call_book::process_of(pid_t number) {
    process &one = processes[number];
    if (const std::string line = command_line(number); line != one.command || one.name.empty()) {
        one = {line, line + " #" + std::to_string(++commands[line]), false};
    }
    return one;
}

bool call_book::enter(const seccomp_notif &notified, observed_call *entry) {
    const auto caller = static_cast<pid_t>(notified.pid);
    const known_call &call = find_call(notified.data.nr);
    process &maker = process_of(caller);
    const std::string &who = maker.name;
    const std::string subject = subject_of(call, caller, notified.data);
    const bool polls = who.find("check_update_over") != std::string::npos && !who.ends_with("#1");
    const bool anonymous = (notified.data.args[3] & MAP_ANONYMOUS) != 0 && is_program(who);
    if (polls || is_irrelevant(subject) ||
        (call.subject == memory && (!anonymous || !maker.loaded))) {
        return false;
    }
    maker.loaded = true;
    const bool opens = opens_for_change(call, notified.data);
    const bool lasting = call.number == SYS_sync || outlives_reboot(subject);
    *entry = {who,
              call.name,
              ++counts[{who, call.name}],
              subject,
              (call.changes || opens) && lasting,
              call.halves && lasting,
              opens ? std::vector<int>{ENOSPC, EIO} : call.errors};
    return true;
}

// Works on copies of the process's descriptors, which share their offsets (pidfd_getfd(2)).
void do_half(const seccomp_notif &notified) {
    const auto process = static_cast<pid_t>(notified.pid);
    const auto &arguments = notified.data.args;
    const renewer::owned_descriptor handle(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
    const auto copy_of = [&handle](uint64_t number) {
        return renewer::owned_descriptor(
            static_cast<int>(syscall(SYS_pidfd_getfd, handle.get(), number, 0)));
    };
    [[maybe_unused]] ssize_t done = 0;
    if (notified.data.nr == SYS_write) {
        std::vector<char> bytes(static_cast<size_t>(arguments[2]) / 2);
        bytes.resize(read_memory(process, arguments[1], bytes.data(), bytes.size()));
        done = write(copy_of(arguments[0]).get(), bytes.data(), bytes.size());
        return;
    }
    const bool sends = notified.data.nr == SYS_sendfile;
    const auto from = copy_of(arguments[sends ? 1 : 0]);
    const auto to = copy_of(arguments[sends ? 0 : 2]);
    // The caller may request more than the file holds; half of what it holds is copied.
    const off_t size = lseek(from.get(), 0, SEEK_END);
    lseek(from.get(), 0, SEEK_SET);
    done = sendfile(to.get(), from.get(), nullptr, static_cast<size_t>(size) / 2);
}

} // namespace simulator
