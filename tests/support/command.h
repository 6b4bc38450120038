#pragma once

#include <cstdio>
#include <stdexcept>
#include <string>
#include <sys/wait.h>

// The exit status of a line for the shell, and what it printed on standard output.
struct ended_command {
    int status;
    std::string output;
};

inline ended_command run_command(const std::string &line) {
    FILE *const output = popen(line.c_str(), "r");
    if (output == nullptr) {
        throw std::runtime_error("cannot start " + line);
    }
    ended_command ended = {};
    for (int byte; (byte = fgetc(output)) != EOF;) {
        ended.output.push_back(static_cast<char>(byte));
    }
    ended.status = WEXITSTATUS(pclose(output));
    return ended;
}

// What a program of netpbm prints, which must succeed.
inline std::string netpbm(const std::string &line) {
    const ended_command done = run_command(line);
    if (done.status != 0) {
        throw std::runtime_error(line + " failed; the tests need the package netpbm");
    }
    return done.output;
}
