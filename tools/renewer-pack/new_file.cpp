#include "new_file.h"

#include "commands.h"
#include "file_bytes.h"
#include "platform/owner.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr int ending_signals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

// The file that the signal handler removes; at most one is being made.
char s_unfinished[4096];

void remove_and_end(int signal_number) {
    unlink(s_unfinished);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

// Signals that are ignored (nohup) stay ignored.
void handle_signals(void (*handler)(int)) {
    for (const int signal_number : ending_signals) {
        struct sigaction action = {};
        if (sigaction(signal_number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action.sa_handler = handler;
            sigaction(signal_number, &action, nullptr);
        }
    }
}

// Blocks the ending signals during its lifetime; one that arrives then ends the program afterwards.
class blocked_signals {
public:
    blocked_signals() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int signal_number : ending_signals) {
            sigaddset(&ending, signal_number);
        }
        pthread_sigmask(SIG_BLOCK, &ending, &before);
    }
    ~blocked_signals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    blocked_signals(const blocked_signals &) = delete;
    blocked_signals &operator=(const blocked_signals &) = delete;

private:
    sigset_t before;
};

// Renames; does not replace an existing file unless `replace` (renameat2(2); a file system without
// support for the flag reports EINVAL).
bool put(const fs::path &from, const fs::path &to, bool replace) {
    if (!replace &&
        renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    return (replace || errno == EINVAL) && rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

mode_t permitted(mode_t mode) {
    const mode_t mask = umask(0);
    umask(mask);
    return mode & ~mask;
}

void check_target(const fs::path &target, bool replace, const std::vector<fs::path> &inputs) {
    for (const fs::path &input : inputs) {
        std::error_code error; // a file that does not exist is not the same
        if (fs::equivalent(input, target, error)) {
            throw usage_error(target.string() + " would be written over while it is read" +
                              (input == target ? "" : " (it is " + input.string() + ")") +
                              ": give another place");
        }
    }
    if (fs::symlink_status(target).type() == fs::file_type::not_found) {
        return;
    }
    if (fs::exists(target) && !fs::is_regular_file(target)) { // a device is never replaced
        errno = fs::is_directory(target) ? EISDIR : ENOTSUP;
        fail(target);
    }
    if (!replace) {
        throw usage_error(target.string() + " exists (--force replaces it)");
    }
}

new_file::new_file(fs::path place, bool may_replace)
    : target(std::move(place)), replace(may_replace) {
    check_target(target, replace, {});
    std::string name =
        (target.parent_path() / ("." + target.filename().string() + ".XXXXXX")).string();
    if (name.size() >= sizeof(s_unfinished)) {
        errno = ENAMETOOLONG;
        fail(target);
    }
    const blocked_signals until_it_would_be_removed;
    const renewer::owned_descriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (!file) {
        fail(target);
    }
    path = name;
    strcpy(s_unfinished, name.c_str());
    handle_signals(remove_and_end);
    fchmod(file.get(), permitted(0666));
}

new_file::~new_file() {
    if (!path.empty()) {
        unlink(path.c_str());
        handle_signals(SIG_DFL);
    }
}

void new_file::write(std::string_view bytes) {
    const renewer::owned_file file(fopen(path.c_str(), "we"));
    if (file == nullptr || fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size() ||
        fflush(file.get()) != 0) {
        fail(target);
    }
}

uint64_t new_file::size() const {
    std::error_code error;
    const uintmax_t bytes = fs::file_size(path, error);
    return error ? 0 : bytes;
}

// proc(5), /proc/self/fd and /proc/self/fdinfo.
uint64_t new_file::position() const {
    std::error_code error;
    for (const auto &entry : fs::directory_iterator("/proc/self/fd", error)) {
        if (fs::equivalent(entry.path(), path, error)) {
            std::ifstream about("/proc/self/fdinfo/" + entry.path().filename().string());
            std::string label;
            uint64_t bytes = 0;
            about >> label >> bytes;
            return bytes;
        }
    }
    return 0;
}

void new_file::put_in_place() {
    const renewer::owned_descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file || fsync(file.get()) != 0) {
        fail(target);
    }
    if (!put(path, target, replace)) {
        check_target(target, replace, {}); // reports a file that another program has made meanwhile
        fail(target);
    }
    path.clear();
    handle_signals(SIG_DFL);
}

} // namespace pack
