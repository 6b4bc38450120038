#include "update/timed_command.h"

#include "platform/shell.h"
#include "update/process_group.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace renewer {

namespace {

constexpr useconds_t poll_interval_us = 100'000;
constexpr int polls_of_grace = end_grace_seconds * 1'000'000 / poll_interval_us;

// What the alarm handler works with. It runs on the thread that waits for the attempt, the only one
// that takes signals, so nothing here is written while it runs.
char s_exec_name[64];
volatile sig_atomic_t s_attempt = 0; // process group of the attempt; 0 when none is waited for
volatile sig_atomic_t s_told_to_end = 0;

// A script must not wait for input that nobody types, and a process of a background group would be
// stopped when it reads from a terminal.
void take_empty_input() {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
}

// Runs in the child of a process with threads. No lock held by one of them can block it: the
// threads never call system(3), and fork(2) resets the C library's own locks. It leaves through
// _exit, so that the parent's buffered output is not written twice. The script gets default
// signals, not those that the run or its starter ignores.
[[noreturn]] void run_attempt_child(const char *command) {
    setpgid(0, 0);
    take_empty_input();
    for (const int number : {SIGALRM, SIGHUP, SIGPIPE, SIGTERM}) {
        signal(number, SIG_DFL);
    }
    const int status = system_with_patience(command);
    _exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

pid_t start_attempt(const char *command) {
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        run_attempt_child(command);
    }
    if (child > 0) {
        setpgid(child, child); // here too, since the child may not have run yet
    }
    return child;
}

void start_time_limit(pid_t attempt, unsigned timeout) {
    s_told_to_end = 0;
    s_attempt = attempt;
    struct sigaction action = {};
    action.sa_handler = handleTimeout;
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
    alarm(timeout);
}

// Until s_attempt is 0 the handler may run and set the alarm again, so this order matters.
void end_time_limit() {
    s_attempt = 0;
    alarm(0);
}

// Waits for the attempt under its time limit and returns its wait status. The attempt is not reaped
// yet, because until then its process group's number cannot be reused.
int await_attempt(pid_t attempt, unsigned timeout) {
    start_time_limit(attempt, timeout);
    siginfo_t ended = {};
    int result;
    do {
        result = waitid(P_PID, static_cast<id_t>(attempt), &ended, WEXITED | WNOWAIT);
    } while (result < 0 && errno == EINTR);
    end_time_limit();
    // Nothing is known of the attempt, so it counts as killed, and is tried again.
    if (result < 0) {
        return SIGKILL;
    }
    // Converted to a wait status (wait(2)): the exit status is in bits 8 to 15, a signal in 0 to 6.
    return ended.si_code == CLD_EXITED ? ended.si_status << 8 : ended.si_status;
}

int status_of_attempt(int wait_status) {
    if (!WIFEXITED(wait_status)) {
        return 1;
    }
    printf("status %d\n", WEXITSTATUS(wait_status));
    return wait_status;
}

group_state state_after_grace(pid_t attempt) {
    group_state state = state_of_group(attempt);
    for (int polls = 0; state == group_state::running && polls < polls_of_grace; ++polls) {
        usleep(poll_interval_us);
        state = state_of_group(attempt);
    }
    return state;
}

// If the group's state is unknown, it is not waited for but killed, so that nothing of it is left
// when the next attempt starts.
void end_rest_of(pid_t attempt) {
    if (state_after_grace(attempt) != group_state::ended) {
        kill(-attempt, SIGKILL);
        state_after_grace(attempt);
    }
}

int run_attempt(pid_t attempt, unsigned timeout) {
    const int status = status_of_attempt(await_attempt(attempt, timeout));
    if (status != 0) {
        end_rest_of(attempt);
    }
    waitpid(attempt, nullptr, 0);
    return status;
}

} // namespace

void handleTimeout(int) {
    const int saved_errno = errno;
    char command[128] = {};
    snprintf(command, sizeof(command), "killall %s", s_exec_name);
    // The thread is in its wait and holds no lock, so starting a shell from here is safe.
    system_with_patience(command);
    // killall alone reaches neither a script that ignores its signal nor the commands that it runs:
    // when the grace is over, the whole group is killed.
    if (s_attempt != 0 && s_told_to_end != 0) {
        kill(-s_attempt, SIGKILL);
    } else if (s_attempt != 0) {
        s_told_to_end = 1;
        alarm(end_grace_seconds);
    }
    errno = saved_errno;
}

int fork_exec_timeout(const char *command, const char *name, unsigned timeout, int tries) {
    int status = 0;
    for (int attempts_left = std::max(tries, 1); attempts_left > 0; --attempts_left) {
        snprintf(s_exec_name, sizeof(s_exec_name), "%s", name);
        printf("fork_exec: %s\n", command);
        const pid_t attempt = start_attempt(command);
        if (attempt < 0) {
            perror("fork failed");
            return 1;
        }
        status = run_attempt(attempt, timeout);
        if (status == 0) {
            return 0;
        }
    }
    return status;
}

} // namespace renewer
