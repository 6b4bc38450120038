#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <string_view>

// Records what the program requests of clock and shell in a test's own process: waits end at once,
// commands are run. Link with renewer::in_process.
struct asked_of_system {
    // All requests, one per line, in the words of a unit's time line: "sleep 1 s", "wait 120 s",
    // "shell echo ..."; also those to an SPI link.
    std::string transcript;

    // Called with each line before the request is performed.
    std::function<void(std::string_view line)> before;

    int interruptions = 0; // how many waits without a descriptor are ended by a signal, 1 ms early
    double passed = 0;     // seconds of all waits so far
    timespec time = {};    // the value of CLOCK_MONOTONIC_RAW
};

asked_of_system &asked();

// Makes the next `count` shells fail to start: system(3) returns `status` and leaves `reason` in
// errno.
void let_shells_fail(int count, int status, int reason);
