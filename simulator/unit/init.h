#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace simulator {

// What the first process of a unit needs to know.
struct boot {
    std::filesystem::path root;
    std::vector<std::string> command; // the program under observation and its arguments
    std::vector<std::string> environment;
    std::vector<std::pair<int, uint64_t>> limits;
    bool application_reads_output = false;
    bool careless_starter = false; // see `unit::careless_starter`
    int output;                    // the program's standard output
    int errors;                    // the program's standard error
    int signal_request;            // read end: each byte is a signal to send to the program
    int result;                    // write end: takes the program's wait status when it has ended
};

// Starts the unit: namespaces of its own, the root as the unit sees it, the application and the
// program. Everything in the unit ends with the process whose number this returns, which ends when
// the program has ended, and with the calling process. Sent SIGTERM it ends the unit first, so that
// nothing of the unit runs any more when it has ended.
pid_t start_unit(const boot &how);

} // namespace simulator
