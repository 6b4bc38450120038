#pragma once

#include <string_view>

namespace simulator {

// How a run of the updater can end, as far as its output shows.
enum class ending {
    updated,
    script_failed,
    script_overran,
    copy_failed,
    versions_unreadable,
    declined,
    unanswered,
    part_number,
    path_not_allowed,
    host_record,
    no_prompts,
    display,
    no_indication,
    battery,
    package,
    wrong_arguments,
    cut,
};

// An ending in words.
struct ending_words {
    ending which;
    std::string_view word;    // "UPDATED", "FAILED", "DECLINED", "REFUSED" or "CUT"
    std::string_view reason;  // in a few words, if nothing more exact is known
    std::string_view look_at; // where to look for the cause; may be empty
};

const ending_words &words_of(ending which);

// How far a run got.
enum class stage {
    started,
    part_number_fits,
    power_measured,
    asked,
    updating,
    copying,
    copied,
    script_started,
    script_started_again,
    script_done,
    ending,
    restarting,
};

// What the run does at that stage, to be put after "while": "running the install script".
std::string_view words_of(stage reached);

} // namespace simulator
