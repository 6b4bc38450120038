#pragma once

#include <linux/seccomp.h>
#include <map>
#include <string>
#include <vector>

namespace simulator {

// The calls that a fault may hit, by number.
const std::vector<int> &observed_numbers();

// One call of a run, by what is the same in every run: who makes it, which it is, and on what.
struct observed_call {
    std::string who;     // the command line of its process, and which one with that line: "sync #2"
    std::string name;    // "openat"
    int count;           // the how many-th of that name there
    std::string subject; // the path or descriptor's path; empty when it has none
    bool changes;        // the content of storage that outlives a reboot
    bool halves;         // it can be done half
    std::vector<int> errors; // with which it may fail

    std::string key() const { return who + "|" + name + "|" + std::to_string(count); }
};

// Tells the calls of a run apart.
class call_book {
public:
    // False for calls that are nobody's concern: of the loader, on pipes and sockets, and those
    // that are made over and over.
    bool enter(const seccomp_notif &call, observed_call *entry);

private:
    struct process {
        std::string command, name;
        bool loaded; // its own instructions have made a call
    };
    process &process_of(pid_t number);
    std::map<pid_t, process> processes;
    std::map<std::string, int> commands;                       // how many processes had it
    std::map<std::pair<std::string, std::string>, int> counts; // calls, by process and call
};

// Does the first half of a call that can be done half, in place of its process.
void do_half(const seccomp_notif &call);

} // namespace simulator
