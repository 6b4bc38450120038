#pragma once

#include <linux/seccomp.h>
#include <map>
#include <string>
#include <vector>

namespace simulator {

// The numbers of the system calls that a fault may hit.
const std::vector<int> &observed_numbers();

// A system call, identified by what is the same in every run: its process, its name and its
// subject.
struct observed_call {
    std::string
        who; // command line of its process, and a count of processes with that line: "sync #2"
    std::string name;        // "openat"
    int count;               // counts the calls of that name in that process
    std::string subject;     // its path, or the path of its descriptor; empty if there is none
    bool changes;            // whether it changes storage that survives a reboot
    bool halves;             // whether it can be done halfway
    std::vector<int> errors; // error numbers that it may fail with

    std::string key() const { return who + "|" + name + "|" + std::to_string(count); }
};

// Identifies the calls of a run.
class call_book {
public:
    // Returns false for calls that are of no interest: those of the loader, on pipes and sockets,
    // and those of polling loops.
    bool enter(const seccomp_notif &call, observed_call *entry);

private:
    struct process {
        std::string command, name;
        bool loaded; // its own code has made a call
    };
    process &process_of(pid_t number);
    std::map<pid_t, process> processes;
    std::map<std::string, int> commands; // number of processes with this command line
    std::map<std::pair<std::string, std::string>, int>
        counts; // number of calls, by process and name
};

// Performs the first half of a call, in place of its process.
void do_half(const seccomp_notif &call);

} // namespace simulator
