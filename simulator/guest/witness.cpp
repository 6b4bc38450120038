#include "simulator/guest/witness.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <linux/cn_proc.h>
#include <linux/connector.h>
#include <linux/netlink.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <utility>

namespace simulator {

namespace {

constexpr char led_class[] = "/sys/class/leds/";

std::string first_line(const std::string &path) {
    std::string line;
    std::getline(std::ifstream(path), line);
    return line;
}

// The command line of a process, with blanks between the arguments.
std::string command_of(pid_t process) {
    std::string line = first_line("/proc/" + std::to_string(process) + "/cmdline");
    for (char &c : line) {
        c = c == '\0' ? ' ' : c;
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

// Subscribes to the kernel's process events (linux/cn_proc.h).
void subscribe(int socket_fd) {
    constexpr proc_cn_mcast_op operation = PROC_CN_MCAST_LISTEN;
    cn_msg connector = {};
    connector.id = {CN_IDX_PROC, CN_VAL_PROC};
    connector.len = sizeof(operation);
    nlmsghdr header = {};
    header.nlmsg_len = NLMSG_HDRLEN + sizeof(connector) + sizeof(operation);
    header.nlmsg_type = NLMSG_DONE;
    char request[NLMSG_HDRLEN + sizeof(connector) + sizeof(operation)];
    memcpy(request, &header, sizeof(header));
    memcpy(request + NLMSG_HDRLEN, &connector, sizeof(connector));
    memcpy(request + NLMSG_HDRLEN + sizeof(connector), &operation, sizeof(operation));
    sockaddr_nl address = {};
    address.nl_family = AF_NETLINK;
    address.nl_groups = CN_IDX_PROC;
    if (bind(socket_fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) != 0 ||
        send(socket_fd, request, sizeof(request), 0) != sizeof(request)) {
        fail("process events");
    }
}

} // namespace

witness::witness(reporter reports_to)
    : report(std::move(reports_to)), changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      events(socket(PF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_CONNECTOR)) {
    for (const auto &led : std::filesystem::directory_iterator(led_class)) {
        const std::string name = led.path().filename();
        const std::string file = led.path() / "brightness";
        if (inotify_add_watch(changes.get(), file.c_str(), IN_MODIFY) < 0) {
            fail(file);
        }
        leds[name] = first_line(file);
    }
    subscribe(events.get());
}

// It does not matter which file changed: all are read.
void witness::look_at_leds() {
    char records[4096];
    while (read(changes.get(), records, sizeof(records)) > 0) {
    }
    for (auto &[name, value] : leds) {
        const std::string now = first_line(led_class + name + "/brightness");
        if (std::exchange(value, now) != now) {
            report("led " + name + " " + now);
        }
    }
}

void witness::look_at_processes() {
    alignas(nlmsghdr) char message[1024];
    while (recv(events.get(), message, sizeof(message), 0) > 0) {
        proc_event event = {};
        memcpy(&event, message + NLMSG_HDRLEN + sizeof(cn_msg), sizeof(event));
        if (event.what == proc_event::PROC_EVENT_EXEC) {
            report("runs " + command_of(event.event_data.exec.process_tgid));
        }
    }
}

} // namespace simulator
