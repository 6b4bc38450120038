#include "simulator/desk/verdict.h"

namespace simulator {

namespace {

verdict with_words(ending which, const run_reading &run, std::string reason = {}) {
    const ending_words &words = words_of(which);
    return {which, std::string(words.word),
            reason.empty() && which != ending::updated ? std::string(words.reason)
                                                       : std::move(reason),
            std::string(words_of(run.reached)), std::string(words.look_at)};
}

verdict cut_by(const std::string &what, const run_reading &run) {
    std::string reason = what + " while " + std::string(words_of(run.reached));
    if (run.stated == ending::updated) {
        reason += "; the update is installed";
    }
    return with_words(ending::cut, run, reason);
}

// "script status 3, twice"
std::string script_reason(const run_reading &run) {
    if (run.statuses.empty()) {
        return "the script was killed";
    }
    std::string reason = "script status " + std::to_string(run.statuses.front());
    if (run.statuses.size() == 2) {
        reason += run.statuses[0] == run.statuses[1] ? ", twice"
                                                     : ", then " + std::to_string(run.statuses[1]);
    }
    return reason;
}

std::string overrun_reason(const run_reading &run) {
    return "the script ran over its limit of " + run.time_limit + " s" +
           (run.attempts == 2 ? ", and was tried twice" : "");
}

std::string battery_reason(const run_reading &run) {
    return run.charge.empty() ? ""
                              : "battery " + run.charge + " %, no external supply; 30 % are needed";
}

verdict stated_ending(const run_reading &run) {
    switch (*run.stated) {
    case ending::battery:
        return with_words(ending::battery, run, battery_reason(run));
    case ending::declined:
        return run.answer.empty() ? with_words(ending::unanswered, run)
                                  : with_words(ending::declined, run, run.answer);
    case ending::updated:
        return with_words(ending::updated, run,
                          run.attempts == 2 ? "at the script's second attempt" : "");
    default:
        return with_words(*run.stated, run, run.reason);
    }
}

verdict failed_install(const run_reading &run) {
    if (run.attempts == 0) {
        return with_words(ending::copy_failed, run);
    }
    return run.overran ? with_words(ending::script_overran, run, overrun_reason(run))
                       : with_words(ending::script_failed, run, script_reason(run));
}

// The ending that the lines show; `otherwise` is the reason if they show none.
verdict ending_of(const run_reading &run, const std::string &otherwise) {
    if (run.stated) {
        return stated_ending(run);
    }
    if (run.flagged) {
        return failed_install(run);
    }
    if (run.reached == stage::script_done && !run.versions_awaited) {
        run_reading updated = run;
        updated.stated = ending::updated;
        return stated_ending(updated);
    }
    if (run.attempts == 2 && run.statuses.size() == 2 && run.statuses.back() != 0) {
        return failed_install(run);
    }
    return cut_by(otherwise, run);
}

} // namespace

std::string verdict::line() const {
    return reason.empty() ? word : word + " (" + reason + ")";
}

run_reading reading_of(const outcome &end) {
    run_reading run;
    for (const event &happened : end.events) {
        if (happened.kind == event_kind::out || happened.kind == event_kind::err) {
            read_printed(run, happened.text);
        } else if (happened.kind == event_kind::shell) {
            read_command(run, happened.text);
        }
    }
    return run;
}

verdict verdict_of(const outcome &end) {
    const run_reading run = reading_of(end);
    if (end.power_cut) {
        return cut_by("the power was cut", run);
    }
    if (end.ended_by != 0) {
        return cut_by("signal " + std::to_string(end.ended_by) + " ended the updater", run);
    }
    if (end.timed_out && run.reached < stage::ending) {
        return cut_by("the desk ended the run", run);
    }
    verdict result =
        ending_of(run, "the updater ended with status " + std::to_string(end.exit_status));
    if (end.timed_out) {
        result.reason += (result.reason.empty() ? "" : "; ") +
                         std::string("the application never acknowledged the end");
    }
    return result;
}

verdict verdict_of(const run_reading &run) {
    return ending_of(run, "the log stops");
}

verdict refused_package(const std::string &why) {
    return with_words(ending::package, {}, "package: " + why);
}

} // namespace simulator
