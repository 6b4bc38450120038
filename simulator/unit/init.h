#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

namespace simulator {

// What the first process of a unit needs in order to start it.
struct boot {
    std::filesystem::path root;
    std::vector<std::string> command; // the program under observation and its arguments
    std::vector<std::string> environment;
    std::vector<std::pair<int, uint64_t>> limits;
    bool application_reads_output = false;
    bool careless_starter = false; // see `unit::careless_starter`
    int output;                    // the program's standard output
    int errors;                    // the program's standard error
    int signal_request; // read end; each byte is the number of a signal to send to the program
    int result;         // write end; gets the program's wait status when it has ended
};

// Starts the unit: its own namespaces, the root as the unit sees it, the application and the
// program. Returns the number of a process that exits when the program has ended. Everything in the
// unit ends with that process, and with the calling process. On SIGTERM it ends the unit before it
// exits itself, so nothing of the unit runs any more afterwards.
pid_t start_unit(const boot &how);

} // namespace simulator
