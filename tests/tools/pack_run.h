#pragma once

#include "tests/support/files.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <vector>

// A run of renewer-pack in the directory /tmp/desk.
struct run {
    int status = -1; // see `status_of`
    std::string out;
    std::string err;
};

// Exit status, or 128 plus the number of the signal that ended a process.
inline int status_of(int wait_status) {
    return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 128 + WTERMSIG(wait_status);
}

inline run pack(const std::string &arguments, const std::string &before = "") {
    std::filesystem::create_directories("/tmp/desk");
    const std::string line = "cd /tmp/desk && " + before + " " RENEWER_PACK " " + arguments +
                             " >/tmp/out 2>/tmp/err </dev/null";
    run done;
    done.status = status_of(system(line.c_str()));
    done.out = get_file("/tmp/out");
    done.err = get_file("/tmp/err");
    return done;
}

// Names of what a directory holds, sorted.
inline std::vector<std::string> names_in(const std::filesystem::path &directory) {
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}
