#pragma once

#include "simulator/desk/package_offer.h"

#include <functional>
#include <stdexcept>

// The commands of renewer-desk. Each returns the exit status.
namespace simulator {

enum desk_status {
    as_expected = 0,
    not_as_expected = 1,
    wrong_usage = 2,
    system_error = 3,
    interrupted = 130, // as a shell reports SIGINT
};

// Ends a command with `wrong_usage`; what() says what is expected.
struct usage_error : std::runtime_error {
    using runtime_error::runtime_error;
};

// A change that the command line makes to the described unit.
using unit_change = std::function<void(unit_description &)>;

struct run_options {
    std::filesystem::path package;           // empty for a built-in example
    std::filesystem::path unit_file;         // empty for the usual unit
    std::vector<unit_change> changes;        // applied after the unit file
    bool oled = false;                       // no update, but the example of the display middleware
    std::vector<std::string> screen_options; // those given that need a screen
    std::string answer;                      // empty if keys are described
    offer_overrides overrides;
    std::filesystem::path script; // instead of the package's
    std::string expected;         // "any", or the word of a verdict in lower case
    double speed = 2;
    std::chrono::seconds patience{600};
    bool plain = false;
    bool verbose = false;
    std::filesystem::path pictures, report, json;
};

// Runs an update in the unit and shows it.
int run(const run_options &options);

// Serves the unit's front panel as a web page on 127.0.0.1; `port` 0 picks a free port.
int panel(const run_options &options, int port);

// Explains a run in the field from its output. "-" is standard input.
int explain(const std::filesystem::path &log);

} // namespace simulator
