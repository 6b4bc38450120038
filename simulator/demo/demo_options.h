#pragma once

#include <string>

namespace simulator {

struct demo_options {
    std::string model = "led";
    std::string answer = "ok";
    std::string script; // a file; empty for a script that works
    std::string pictures;
    bool built_in = false;
    double speed = 2;
    bool plain = false;
};

// Ends the process with a message on standard error and status 2.
[[noreturn]] void used_wrongly(const std::string &why);

// Reads the command line; ends the process when that is all there is to do.
demo_options parse_options(int argc, char **argv);

} // namespace simulator
