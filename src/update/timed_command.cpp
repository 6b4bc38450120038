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

// A script that asks must not wait for an answer that nobody types, and a process of a background
// group that reads from a terminal would be stopped.
void take_empty_input() {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
}

// The child of a process with threads: no lock that one of them may have held stands in its way
// (they never call system(3), and fork(2) sets right what is the C library's own), and it leaves
// through _exit, so that nothing of the parent's buffered output is written twice. The script finds
// the usual signals, not those that the run or its starter ignores.
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
        setpgid(child, child); // here too, since the child may not have come to it
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

// The handler may have run, and have set the alarm again, until the first of these.
void end_time_limit() {
    s_attempt = 0;
    alarm(0);
}

// Waits for the attempt under its time limit and returns its wait status. The attempt is not
// collected: until it is, the number of its process group is nobody else's.
int await_attempt(pid_t attempt, unsigned timeout) {
    start_time_limit(attempt, timeout);
    siginfo_t ended = {};
    int result;
    do {
        result = waitid(P_PID, static_cast<id_t>(attempt), &ended, WEXITED | WNOWAIT);
    } while (result < 0 && errno == EINTR);
    end_time_limit();
    if (result < 0) {
        return SIGKILL;
    }
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

// What cannot be seen is not waited for, and must not meet the next attempt either.
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
