#include "simulator/boundary/process.h"

#include "simulator/boundary/protocol.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <span>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace boundary {

bool is_program = false;
unsigned long spi_transfers_that_work = ~0ul;

namespace {

// The socket is opened anew for each record: a descriptor kept open would shift the numbers that
// the program's own descriptors get, and the program may close all that it does not know.
void send_parts(std::span<const iovec> parts) {
    const int saved_errno = errno;
    const int socket_fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket_fd >= 0) {
        sockaddr_un address = {AF_UNIX, {}};
        strcpy(address.sun_path, simulator::record_path);
        msghdr message = {};
        message.msg_name = &address;
        message.msg_namelen = sizeof(address);
        message.msg_iov = const_cast<iovec *>(parts.data());
        message.msg_iovlen = parts.size();
        sendmsg(socket_fd, &message, MSG_NOSIGNAL);
        close(socket_fd);
    }
    errno = saved_errno;
}

[[gnu::constructor]] void begin() {
    if (const char *count = getenv(simulator::spi_transfers_variable)) {
        spi_transfers_that_work = strtoul(count, nullptr, 10);
    }
    if (const char *failures = getenv(simulator::shell_failures_variable)) {
        char *command = nullptr;
        no_shells.left = strtol(failures, &command, 10);
        no_shells.command = command + 1;
    }
    is_program = getenv(simulator::program_variable) != nullptr;
    unsetenv(simulator::program_variable);
}

[[gnu::destructor]] void end() {
    rusage usage = {};
    if (is_program && getrusage(RUSAGE_SELF, &usage) == 0) {
        report("memory %ld", usage.ru_maxrss);
    }
}

} // namespace

void send_record(const char *record, size_t size) {
    const iovec parts[] = {{const_cast<char *>(record), size}};
    send_parts(parts);
}

void report(const char *format, ...) {
    char record[4096];
    const size_t begin = gettid() == getpid() ? 0 : strlen(simulator::thread_mark);
    memcpy(record, simulator::thread_mark, begin);
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(record + begin, sizeof(record) - begin, format, arguments);
    va_end(arguments);
    if (length > 0) {
        const size_t size = begin + static_cast<size_t>(length);
        send_record(record, size < sizeof(record) ? size : sizeof(record) - 1);
    }
}

void report_long(const char *kind, const char *text) {
    const iovec parts[] = {{const_cast<char *>(kind), strlen(kind)},
                           {const_cast<char *>(text), strlen(text)}};
    send_parts(parts);
}

void descriptor_path(int descriptor, char (&path)[256]) {
    char link[64];
    snprintf(link, sizeof(link), "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(link, path, sizeof(path) - 1);
    path[length > 0 ? length : 0] = '\0';
}

} // namespace boundary

extern "C" {

// ThreadSanitizer delays signals during calls that it does not know to be blocking, such as this
// one. Under it the wait is therefore a loop of short sleeps, which it does know.
int waitid(idtype_t type, id_t id, siginfo_t *ended, int options) {
    const auto real = boundary::next<decltype(waitid)>("waitid");
    if (dlsym(RTLD_DEFAULT, "__tsan_init") == nullptr) {
        return real(type, id, ended, options);
    }
    const auto pause = boundary::next<decltype(nanosleep)>(boundary::real_nanosleep);
    const timespec moment = {0, 1'000'000};
    for (;;) {
        ended->si_pid = 0;
        const int result = real(type, id, ended, options | WNOHANG);
        if (result != 0 || ended->si_pid != 0) {
            return result;
        }
        pause(&moment, nullptr);
    }
}

// A direct request to the kernel, without the unit's reboot command.
int reboot(int) noexcept {
    boundary::report("call reboot by the kernel");
    return 0;
}

int kill(pid_t process, int signal) {
    if (signal != 0 && boundary::is_program) {
        boundary::report("signal %d to %s", signal, process < 0 ? "group" : "process");
    }
    return boundary::next<decltype(kill)>("kill")(process, signal);
}

} // extern "C"
