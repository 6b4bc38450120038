#include "update/timed_command.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace renewer {

namespace {

// How long what was told to end has until it is ended.
constexpr unsigned grace_seconds = 3;
constexpr useconds_t poll_interval_us = 100'000;
constexpr int polls_of_grace = grace_seconds * 1'000'000 / poll_interval_us;

// Read by the alarm handler, which runs on the thread that waits for the attempt. Written only
// while no alarm is set.
char s_exec_name[64];
volatile sig_atomic_t s_attempt = 0; // process group of the attempt
volatile sig_atomic_t s_timed_out = 0;

bool s_adopts_orphans = false;

// The child of a process with threads: it takes no lock that one of them may have held, and leaves
// through _exit, so that nothing of the parent's buffered output is written twice.
[[noreturn]] void be_attempt(const char *command) {
    setpgid(0, 0);
    char *const arguments[] = {const_cast<char *>("sh"), const_cast<char *>("-c"),
                               const_cast<char *>(command), nullptr};
    pid_t shell;
    if (posix_spawn(&shell, "/bin/sh", nullptr, nullptr, arguments, environ) != 0) {
        _exit(127);
    }
    int status = 0;
    while (waitpid(shell, &status, 0) < 0 && errno == EINTR) {
    }
    _exit(WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status));
}

pid_t start_attempt(const char *command) {
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        be_attempt(command);
    }
    if (child > 0) {
        setpgid(child, child); // here too, since the child may not have come to it
    }
    return child;
}

void set_alarm(unsigned timeout) {
    struct sigaction action = {};
    action.sa_handler = handleTimeout;
    action.sa_flags = SA_RESTART;
    sigaction(SIGALRM, &action, nullptr);
    alarm(timeout);
}

// Waits for the attempt under its time limit. It is collected only after the alarm is off, so that
// the handler never meets a process group number that has been given away.
int await_attempt(pid_t attempt, unsigned timeout) {
    s_attempt = attempt;
    s_timed_out = 0;
    set_alarm(timeout);
    siginfo_t ended;
    while (waitid(P_PID, static_cast<id_t>(attempt), &ended, WEXITED | WNOWAIT) < 0 &&
           errno == EINTR) {
    }
    alarm(0);
    int status = 0;
    waitpid(attempt, &status, 0);
    return status;
}

// Asks that what an attempt leaves behind comes to this process instead of to init, so that it is
// known when nothing of the attempt is left, and the group's number stays the attempt's until then
// (prctl(2), PR_SET_CHILD_SUBREAPER, Linux 3.4).
void adopt_orphans() {
    s_adopts_orphans = prctl(PR_SET_CHILD_SUBREAPER, 1) == 0;
}

// Collects what has ended of the attempt and tells whether some of it still runs.
bool still_runs(pid_t attempt) {
    pid_t ended;
    do {
        ended = waitpid(-attempt, nullptr, WNOHANG);
    } while (ended > 0);
    // Where the kernel gives orphans to init all the same, the group is asked for by its number.
    return ended == 0 || (!s_adopts_orphans && kill(-attempt, 0) == 0);
}

bool ends_within_grace(pid_t attempt) {
    for (int polls = 0; polls < polls_of_grace; ++polls) {
        if (!still_runs(attempt)) {
            return true;
        }
        usleep(poll_interval_us);
    }
    return !still_runs(attempt);
}

void end_rest_of(pid_t attempt) {
    if (ends_within_grace(attempt)) {
        return;
    }
    kill(-attempt, SIGKILL);
    ends_within_grace(attempt);
}

int status_of_attempt(int wait_status) {
    if (!WIFEXITED(wait_status)) {
        return 1;
    }
    printf("status %d\n", WEXITSTATUS(wait_status));
    // A script that answers the time-out by ending with 0 has not done its work.
    return wait_status == 0 && s_timed_out != 0 ? 1 : wait_status;
}

} // namespace

void handleTimeout(int) {
    const int saved_errno = errno;
    if (s_timed_out != 0) {
        kill(-s_attempt, SIGKILL);
    } else {
        s_timed_out = 1;
        char command[128] = {};
        snprintf(command, sizeof(command), "killall %s", s_exec_name);
        // The thread is in its wait and holds no lock, so starting a shell from here is safe.
        [[maybe_unused]] const int status = system(command);
        alarm(grace_seconds);
    }
    errno = saved_errno;
}

int fork_exec_timeout(const char *command, const char *name, unsigned timeout, int tries) {
    adopt_orphans();
    int status = 0;
    for (int attempts_left = std::max(tries, 1); attempts_left > 0; --attempts_left) {
        snprintf(s_exec_name, sizeof(s_exec_name), "%s", name);
        printf("fork_exec: %s\n", command);
        const pid_t attempt = start_attempt(command);
        if (attempt < 0) {
            perror("fork failed");
            return 1;
        }
        status = status_of_attempt(await_attempt(attempt, timeout));
        if (status == 0) {
            return 0;
        }
        end_rest_of(attempt);
    }
    return status;
}

} // namespace renewer
