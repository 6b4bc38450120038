#include "simulator/faults/filter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <linux/audit.h>
#include <linux/filter.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace simulator {

namespace {

[[noreturn]] void refuse(const char *what) {
    perror(what);
    _exit(126);
}

// Calls with these numbers wait for the listener; all others go on.
int install_filter(const std::vector<int> &numbers) {
    std::vector<sock_filter> program = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const int number : numbers) {
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(number), 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        refuse("no_new_privs");
    }
    // Only fatal signals interrupt a waiting call; otherwise it would be restarted and be seen
    // twice.
    return static_cast<int>(syscall(
        SYS_seccomp, SECCOMP_SET_MODE_FILTER,
        SECCOMP_FILTER_FLAG_NEW_LISTENER | SECCOMP_FILTER_FLAG_WAIT_KILLABLE_RECV, &filter));
}

// A message with a descriptor, to be sent through a socket (unix(7), SCM_RIGHTS).
struct descriptor_message {
    char byte = 0;
    iovec content = {&byte, 1};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};

    descriptor_message() {
        message.msg_iov = &content;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
    }
};

void send_descriptor(int socket_fd, int descriptor) {
    descriptor_message way;
    cmsghdr *header = CMSG_FIRSTHDR(&way.message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(descriptor));
    memcpy(CMSG_DATA(header), &descriptor, sizeof(descriptor));
    if (sendmsg(socket_fd, &way.message, 0) < 0) {
        refuse("sendmsg");
    }
}

int receive_descriptor(int socket_fd) {
    descriptor_message way;
    int descriptor;
    if (recvmsg(socket_fd, &way.message, MSG_CMSG_CLOEXEC) <= 0 ||
        CMSG_FIRSTHDR(&way.message) == nullptr) {
        refuse("seccomp");
    }
    memcpy(&descriptor, CMSG_DATA(CMSG_FIRSTHDR(&way.message)), sizeof(descriptor));
    return descriptor;
}

void answer(int listener, const seccomp_notif &call, int error, uint32_t flags) {
    seccomp_notif_resp response = {call.id, 0, -error, flags};
    ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &response);
}

} // namespace

int start_observed(char **command, const std::vector<int> &numbers, pid_t *program) {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        refuse("socketpair");
    }
    *program = fork();
    if (*program == 0) {
        const int listener = install_filter(numbers);
        if (listener < 0) {
            refuse("seccomp");
        }
        send_descriptor(ends[1], listener);
        close(listener);
        execv(command[0], command);
        refuse(command[0]);
    }
    close(ends[1]);
    const int listener = receive_descriptor(ends[0]);
    close(ends[0]);
    return listener;
}

bool next_call(int listener, seccomp_notif *call) {
    *call = {};
    return ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, call) == 0;
}

void allow_call(int listener, const seccomp_notif &call) {
    answer(listener, call, 0, SECCOMP_USER_NOTIF_FLAG_CONTINUE);
}

void fail_call(int listener, const seccomp_notif &call, int error) {
    answer(listener, call, error, 0);
}

} // namespace simulator
