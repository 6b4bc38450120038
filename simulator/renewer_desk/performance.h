#pragma once

#include "simulator/desk/verdict.h"
#include "simulator/renewer_desk/commands.h"
#include "simulator/report/story.h"

namespace simulator {

// What is run, and in which unit.
struct performance {
    unit_description described;
    std::optional<package_offer> offer; // none where no update is run
    std::filesystem::path script;       // instead of the package's
    std::filesystem::path program;      // instead of the updater
    std::vector<std::string> arguments;
    std::string told; // what is said before it begins
};

// Runs it and shows it; after a power cut once more, when that is described. The story has the
// verdict on the last run.
run_story play(const performance &playing, const run_options &options);

// From now on signals ask for an end, so that everything is put away before it.
void take_signals();

// Whether the user of the desk has asked for an end (SIGINT, SIGTERM, SIGHUP, or nobody reads on).
bool end_is_requested();

// The keys that answer the question so: "ok", "power", "other", "decline" or "none".
std::vector<key_press> keys_of_answer(const std::string &answer, bool screen);

} // namespace simulator
