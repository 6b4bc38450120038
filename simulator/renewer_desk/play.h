#pragma once

#include "simulator/desk/verdict.h"
#include "simulator/renewer_desk/commands.h"
#include "simulator/report/story.h"

namespace simulator {

// What to run, and in which unit.
struct run_setup {
    unit_description described;
    std::optional<package_offer> offer; // none if no update is run
    std::filesystem::path script;       // instead of the package's
    std::filesystem::path program;      // instead of the updater
    std::vector<std::string> arguments;
    std::string introduction; // printed before the run
};

// Runs it and shows it, once more after a power cut if the description says so. The story's verdict
// is that on the last run.
run_story play(const run_setup &setup, const run_options &options);

// From now on signals request an end, so that everything is cleaned up first.
void take_signals();

// Whether an end was requested (SIGINT, SIGTERM, SIGHUP, or nobody reads the output any more).
bool end_is_requested();

// The key presses that answer the question with "ok", "power", "other", "decline" or "none".
std::vector<key_press> keys_of_answer(const std::string &answer, bool screen);

} // namespace simulator
