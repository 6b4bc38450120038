#pragma once

#include "simulator/desk/package_offer.h"

#include <functional>
#include <stdexcept>

// The commands of renewer-desk. Each returns the exit status.
namespace simulator {

enum desk_status {
    as_expected = 0,
    not_as_expected = 1,
    used_wrongly = 2,
    system_error = 3,
    interrupted = 130, // as a shell tells of SIGINT
};

// What ends a command with `used_wrongly`; what() says what would be right.
struct misused : std::runtime_error {
    using runtime_error::runtime_error;
};

// What the command line changes in the unit that is described.
using unit_change = std::function<void(unit_description &)>;

struct run_options {
    std::filesystem::path package;           // none for a made-up one
    std::filesystem::path unit_file;         // none for the usual unit
    std::vector<unit_change> changes;        // after the unit file
    bool oled = false;                       // no update: the display middleware's example
    std::vector<std::string> screen_options; // those given that go with a screen only
    std::string answer;                      // empty where keys are described
    offer_wishes wishes;
    std::filesystem::path script; // instead of the package's
    std::string expected;         // "any", or a word of a verdict in small letters
    double speed = 2;
    std::chrono::seconds patience{600};
    bool plain = false;
    bool verbose = false;
    std::filesystem::path pictures, report, json;
};

// Runs a package in the unit, or a made-up one, and shows it.
int run(const run_options &options);

// Serves the unit's front panel as a page, at any free port of 127.0.0.1 when `port` is 0.
int panel(const run_options &options, int port);

// Says what happened in a run in the field from what it printed. "-" is standard input.
int explain(const std::filesystem::path &log);

} // namespace simulator
