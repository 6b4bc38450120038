#include "simulator/boundary/process.h"

#include "simulator/boundary/protocol.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace boundary {

double speed = 1;
bool is_program = false;
unsigned long spi_transfers_that_work = ~0ul;

namespace {

[[gnu::constructor]] void begin() {
    const char *text = getenv(simulator::speed_variable);
    if (text != nullptr && strtod(text, nullptr) > 0) {
        speed = strtod(text, nullptr);
    }
    if (const char *count = getenv(simulator::spi_transfers_variable)) {
        spi_transfers_that_work = strtoul(count, nullptr, 10);
    }
    is_program = getenv(simulator::program_variable) != nullptr;
    unsetenv(simulator::program_variable);
}

[[gnu::destructor]] void end() {
    rusage usage = {};
    if (is_program && getrusage(RUSAGE_SELF, &usage) == 0) {
        tell("memory %ld", usage.ru_maxrss);
    }
}

void tell_long(const char *kind, const char *text) {
    const size_t size = strlen(kind) + 1 + strlen(text);
    char *record = static_cast<char *>(malloc(size + 1));
    if (record != nullptr) {
        sprintf(record, "%s %s", kind, text);
        send_record(record, size);
        free(record);
    }
}

} // namespace

// The socket is opened for each record, so that no descriptor of the program's is taken or closed.
void send_record(const char *record, size_t size) {
    const int saved_errno = errno;
    const int socket_fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket_fd >= 0) {
        sockaddr_un address = {AF_UNIX, {}};
        strcpy(address.sun_path, simulator::record_path);
        sendto(socket_fd, record, size, MSG_NOSIGNAL, reinterpret_cast<sockaddr *>(&address),
               sizeof(address));
        close(socket_fd);
    }
    errno = saved_errno;
}

void tell(const char *format, ...) {
    char record[4096];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(record, sizeof(record), format, arguments);
    va_end(arguments);
    if (length > 0) {
        const size_t size = static_cast<size_t>(length);
        send_record(record, size < sizeof(record) ? size : sizeof(record) - 1);
    }
}

} // namespace boundary

extern "C" {

int system(const char *command) {
    boundary::tell_long("shell", command);
    return boundary::next<decltype(system)>("system")(command);
}

int kill(pid_t process, int signal) {
    if (signal != 0 && boundary::is_program) {
        boundary::tell("signal %d to %s", signal, process < 0 ? "group" : "process");
    }
    return boundary::next<decltype(kill)>("kill")(process, signal);
}

} // extern "C"
