#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <string_view>

// What the program asks of its clock and its shell in a test's own process: waits end at once,
// commands are run. Link with renewer::in_process.
struct asked_of_system {
    // Everything asked for, one a line, in the words of a unit's time line: "sleep 1 s",
    // "wait 120 s", "shell echo ..."; beside it what an SPI link was asked for.
    std::string transcript;

    // Called with each line before what it asks for is done.
    std::function<void(std::string_view line)> before;

    int interruptions = 0; // so many waits for no descriptor are ended by a signal, 1 ms early
    double passed = 0;     // seconds of all waits so far
    timespec time = {};    // what CLOCK_MONOTONIC_RAW says
};

asked_of_system &asked();

// So many shells cannot be started: system(3) returns `status` and leaves `reason` in errno.
void let_shells_fail(int count, int status, int reason);
