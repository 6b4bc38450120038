#include "simulator/desk/verdict.h"
#include "simulator/renewer_desk/commands.h"

#include <fstream>
#include <iostream>
#include <string>

namespace simulator {

namespace {

constexpr size_t longest_line = 64 * 1024; // a file that is no log may have no newline at all

run_reading read_log(std::istream &log) {
    run_reading run;
    std::string line;
    for (int byte = log.get(); byte != EOF; byte = log.get()) {
        if (byte == '\n' || line.size() == longest_line) {
            read_printed(run, line);
            line.clear();
        } else {
            line += static_cast<char>(byte);
        }
    }
    read_printed(run, line);
    return run;
}

} // namespace

int explain(const std::filesystem::path &log) {
    std::ifstream file;
    if (log != "-") {
        file.open(log, std::ios::binary);
        if (!file || std::filesystem::is_directory(log)) {
            throw std::runtime_error(log.string() + ": cannot be read");
        }
    }
    const run_reading run = read_log(log == "-" ? std::cin : file);
    if (!run.seen) {
        printf("Nothing in it was printed by the updater.\n");
        return not_as_expected;
    }
    const verdict result = verdict_of(run);
    printf("It was last seen %s.\n", result.came_to.c_str());
    if (!result.look_at.empty()) {
        printf("Look at %s.\n", result.look_at.c_str());
    }
    printf("%s\n", result.line().c_str());
    return as_expected;
}

} // namespace simulator
