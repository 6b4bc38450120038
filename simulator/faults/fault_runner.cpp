// fault_runner PROGRAM [ARGUMENT]...
//
// Runs the program and makes one of its system calls, or of the programs that it starts, fail, or
// cuts the unit's power at that call. The environment variable FAULT selects it: "<key> <what>",
// where the key is that of observed_call.h and <what> is an error number or "before", "half" or
// "after". Without FAULT all calls go on as usual; if REST is set, each call that changes storage
// is preceded by a rest of that many seconds, in which earlier changes can reach the medium.
//
// Writes to "/.simulator/calls": without FAULT a line for each call, with tabs between the parts
// (key, subject, "changes" or "-", "halves" or "-", its errors); with FAULT the line of the call
// that was hit.

#include "simulator/faults/filter.h"
#include "simulator/faults/observed_call.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace simulator;

namespace {

// Longer than a call that changes storage takes.
constexpr int call_ms = 30;

std::string line_of(const observed_call &call) {
    std::string line = call.key() + "\t" + call.subject + "\t" + (call.changes ? "changes" : "-") +
                       "\t" + (call.halves ? "halves" : "-") + "\t";
    for (const int error : call.errors) {
        line += std::to_string(error) + " ";
    }
    return line + "\n";
}

unsigned seconds_of_rest() {
    const char *text = getenv("REST");
    return text == nullptr ? 0 : static_cast<unsigned>(atoi(text));
}

class runner {
public:
    runner(int notifier, pid_t started, const std::string &fault)
        : listener(notifier), program(started), key(fault.substr(0, fault.rfind(' '))),
          what(fault.substr(fault.rfind(' ') + 1)), calls("/.simulator/calls") {}

    // Returns the exit status of the program.
    int run();

private:
    void take();
    [[noreturn]] void cut_power();

    int listener;
    pid_t program;
    std::string key, what;
    std::ofstream calls;
    call_book book;
    unsigned rest = seconds_of_rest();
    bool ends_after_call = false;
};

// Kills all processes except the unit's first one and this one.
void runner::cut_power() {
    kill(-1, SIGKILL);
    calls.flush();
    _exit(0);
}

void runner::take() {
    seccomp_notif call;
    if (!next_call(listener, &call)) {
        return;
    }
    if (ends_after_call) {
        cut_power();
    }
    observed_call entry;
    if (!book.enter(call, &entry) || (!key.empty() && entry.key() != key)) {
        return allow_call(listener, call);
    }
    calls << line_of(entry);
    if (key.empty()) {
        sleep(entry.changes ? rest : 0);
        return allow_call(listener, call);
    }
    if (what == "before") {
        cut_power();
    }
    if (what == "half") {
        do_half(call);
        cut_power();
    }
    if (what == "after") {
        ends_after_call = true;
        return allow_call(listener, call);
    }
    fail_call(listener, call, std::stoi(what));
}

int runner::run() {
    for (;;) {
        pollfd source = {listener, POLLIN, 0};
        const int ready = poll(&source, 1, ends_after_call ? call_ms : 2);
        if (ready > 0 && (source.revents & POLLIN) != 0) {
            take();
        } else if (ends_after_call) {
            cut_power();
        }
        int status;
        if (ready == 0 && waitpid(program, &status, WNOHANG) == program) {
            calls.flush();
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        if ((source.revents & POLLHUP) != 0) {
            waitpid(program, &status, 0);
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
    }
}

} // namespace

int main(int, char **arguments) {
    const char *fault = getenv("FAULT");
    const std::string wanted = fault == nullptr ? "" : fault;
    unsetenv("FAULT");
    pid_t program;
    const int listener = start_observed(arguments + 1, observed_numbers(), &program);
    return runner(listener, program, wanted).run();
}
