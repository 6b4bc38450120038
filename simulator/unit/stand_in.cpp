// Stand-ins for the programs of a unit that a run of the updater uses: the main application, init
// scripts and reboot. One program under all their names, which reports to the desk that it ran.

#include "simulator/boundary/protocol.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

void send_record(const std::string &record) {
    const int socket_fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {AF_UNIX, {}};
    strcpy(address.sun_path, simulator::record_path);
    sendto(socket_fd, record.data(), record.size(), MSG_NOSIGNAL,
           reinterpret_cast<sockaddr *>(&address), sizeof(address));
    close(socket_fd);
}

void end_application(int) {
    send_record("call S080_application ended");
    _exit(0);
}

// Runs until SIGTERM; copies its standard input to its standard output.
int application() {
    signal(SIGTERM, end_application);
    char bytes[4096];
    for (;;) {
        const ssize_t size = read(STDIN_FILENO, bytes, sizeof(bytes));
        if (size <= 0) {
            pause();
        } else if (write(STDOUT_FILENO, bytes, static_cast<size_t>(size)) < 0) {
            return 1;
        }
    }
}

} // namespace

int main(int argc, char **argv) {
    const std::string path = argv[0];
    const std::string name = path.substr(path.rfind('/') + 1);
    if (path == "/.simulator/bin/S080_application") {
        return application();
    }
    std::string record = "call " + name;
    for (int i = 1; i < argc; ++i) {
        record += std::string(" ") + argv[i];
    }
    send_record(record);
    return 0;
}
