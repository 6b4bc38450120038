#include "simulator/unit/recorder.h"

#include "simulator/unit/failure.h"

#include <cstring>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>

namespace simulator {

namespace {

constexpr size_t largest_record =
    256 * 1024; // larger than any datagram that the kernel accepts here

sockaddr_un address_of(const std::filesystem::path &path) {
    sockaddr_un address = {AF_UNIX, {}};
    if (path.native().size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("work directory: path too long for a socket");
    }
    strcpy(address.sun_path, path.c_str());
    return address;
}

std::string own_address(int socket_fd) {
    sockaddr_un address = {};
    socklen_t size = sizeof(address);
    if (getsockname(socket_fd, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        fail("getsockname");
    }
    return {reinterpret_cast<const char *>(&address), size};
}

int connected_sender(const sockaddr_un &to) {
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un unnamed = {AF_UNIX, {}};
    // Binding to the bare address family assigns a unique abstract address (unix(7), autobind).
    if (sender < 0 ||
        bind(sender, reinterpret_cast<const sockaddr *>(&unnamed), sizeof(sa_family_t)) != 0 ||
        connect(sender, reinterpret_cast<const sockaddr *>(&to), sizeof(to)) != 0) {
        fail("output socket");
    }
    return sender;
}

int bound_receiver(const sockaddr_un &at) {
    const int receiver = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (receiver < 0 || bind(receiver, reinterpret_cast<const sockaddr *>(&at), sizeof(at)) != 0) {
        fail("record socket");
    }
    return receiver;
}

} // namespace

recorder::recorder(const std::filesystem::path &path)
    : receiver(bound_receiver(address_of(path))), out(connected_sender(address_of(path))),
      err(connected_sender(address_of(path))), out_address(own_address(out.get())),
      err_address(own_address(err.get())) {}

recorder::source recorder::take(std::string_view &text) {
    sockaddr_un sender = {};
    socklen_t sender_size = sizeof(sender);
    taken.resize(largest_record);
    const ssize_t size = recvfrom(receiver.get(), taken.data(), taken.size(), 0,
                                  reinterpret_cast<sockaddr *>(&sender), &sender_size);
    if (size < 0) {
        return source::none;
    }
    text = std::string_view(taken).substr(0, static_cast<size_t>(size));
    const std::string_view address(reinterpret_cast<const char *>(&sender), sender_size);
    if (address == out_address) {
        return source::output;
    }
    return address == err_address ? source::errors : source::record;
}

} // namespace simulator
