// The unit's first process: assembles the root, starts the application and the program, and reaps
// processes until the program has ended. When it exits, the kernel ends everything that still runs
// in its pid namespace.

#include "simulator/unit/init.h"

#include "platform/owner.h"
#include "simulator/boundary/protocol.h"
#include "simulator/unit/namespaces.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace simulator {

namespace {

std::vector<char *> pointers(const std::vector<std::string> &texts) {
    std::vector<char *> result;
    for (const std::string &text : texts) {
        result.push_back(const_cast<char *>(text.c_str()));
    }
    result.push_back(nullptr);
    return result;
}

void assemble_root(const std::string &root) {
    show_system(root);
    show_devices(root);
    change_root(root);
    if (mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0) {
        refuse(
            "a /proc of its own is not allowed here (in a container, nothing may lie over /proc)");
    }
}

void spoil_inherited_state() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    signal(SIGCHLD, SIG_IGN);
    signal(SIGTERM, SIG_IGN);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        close(standard);
    }
}

// Undoes the desk's own handling of signals.
void reset_signals(sighandler_t on_term = SIG_DFL) {
    signal(SIGHUP, SIG_DFL);
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, on_term);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

// Forks with all signals blocked in the child, so that none is lost before its handlers are set.
pid_t fork_with_signals_blocked() {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const pid_t child = fork();
    if (child != 0) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    return child;
}

// Starts `command` with these descriptors as its standard input, output and error.
pid_t start(const std::vector<std::string> &command, const std::vector<std::string> &environment,
            int input, int output, int errors, const boot &how) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    dup2(input, 0);
    dup2(output, 1);
    dup2(errors, 2);
    for (const auto &[resource, value] : how.limits) {
        const rlimit limit = {value, value};
        setrlimit(static_cast<__rlimit_resource>(resource), &limit);
    }
    signal(SIGPIPE, SIG_DFL);
    close_range(3, ~0u, CLOSE_RANGE_CLOEXEC); // no descriptor of the desk is open in the unit
    if (how.careless_starter) {
        spoil_inherited_state();
    }
    execve(command[0].c_str(), pointers(command).data(), pointers(environment).data());
    refuse(command[0]);
}

struct running {
    pid_t application;
    pid_t program;
};

running start_processes(const boot &how) {
    const renewer::owned_descriptor null_device(open("/dev/null", O_RDWR | O_CLOEXEC));
    const int nothing = null_device.get();
    boot unlimited = how;
    unlimited.limits.clear();
    unlimited.careless_starter = false;
    const std::vector<std::string> application = {"/.simulator/bin/S080_application"};
    std::vector<std::string> observed = how.environment;
    observed.push_back(std::string(program_variable) + "=1");
    if (!how.application_reads_output) {
        const pid_t first =
            start(application, how.environment, nothing, nothing, nothing, unlimited);
        return {first, start(how.command, observed, nothing, how.output, how.errors, how)};
    }
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        refuse("pipe");
    }
    const renewer::owned_descriptor read_end(ends[0]);
    const renewer::owned_descriptor write_end(ends[1]);
    const pid_t first =
        start(application, how.environment, read_end.get(), how.output, nothing, unlimited);
    const pid_t second =
        start(how.command, observed, nothing, write_end.get(), write_end.get(), how);
    return {first, second};
}

// Forwards signals to the program and reaps ended processes until the program is one of them.
int wait_for(pid_t program, int signal_request) {
    for (;;) {
        pollfd request = {signal_request, POLLIN, 0};
        poll(&request, 1, 5);
        char number;
        if ((request.revents & POLLIN) != 0 && read(signal_request, &number, 1) == 1) {
            kill(program, number);
        }
        int status;
        pid_t ended;
        while ((ended = waitpid(-1, &status, WNOHANG)) > 0) {
            if (ended == program) {
                return status;
            }
        }
    }
}

pid_t first_process = 0;

void end_first_process(int) {
    kill(first_process, SIGKILL);
}

[[noreturn]] void run_first_process(const boot &how) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    assemble_root(how.root);
    const running processes = start_processes(how);
    const int status = wait_for(processes.program, how.signal_request);
    [[maybe_unused]] const ssize_t written = write(how.result, &status, sizeof(status));
    _exit(0);
}

} // namespace

pid_t start_unit(const boot &how) {
    const pid_t desk = getpid();
    const pid_t outer = fork_with_signals_blocked();
    if (outer != 0) {
        return outer;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != desk) {
        _exit(0);
    }
    setpgid(0, 0); // Ctrl-C at the desk's terminal goes to the desk only
    // unshare(2) moves only later children into a new pid namespace; the next one is its first
    // process.
    enter_namespaces(CLONE_NEWPID | CLONE_NEWIPC | CLONE_NEWNET | CLONE_NEWUTS);
    first_process = fork();
    if (first_process == 0) {
        reset_signals();
        run_first_process(how);
    }
    reset_signals(end_first_process);
    close(how.result);
    waitpid(first_process, nullptr, 0);
    _exit(0);
}

} // namespace simulator
