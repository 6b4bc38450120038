#include "simulator/desk/run_reading.h"

#include <algorithm>
#include <charconv>
#include <csignal>

namespace simulator {

namespace {

// A text that a line of the updater contains, and what it means. `take` gets the rest of the line
// and returns whether it really is a line of the updater.
struct mark {
    std::string_view text;
    bool (*take)(run_reading &run, std::string_view rest);
};

template <stage reached>
bool reach(run_reading &run, std::string_view) {
    run.reached = std::max(run.reached, reached);
    return true;
}

template <ending which>
bool end_by(run_reading &run, std::string_view) {
    run.stated = which;
    return true;
}

// The updater prints the kind of package first. A log may hold several runs; the last one counts.
bool begin(run_reading &run, std::string_view) {
    run = {};
    return true;
}

std::string first_word(std::string_view text) {
    return std::string(text.substr(0, text.find_first_of(" \r\n")));
}

// "1,pn3=3,st2=1,st3=6": the package's two characters, then the unit's; none of the package if its
// header could not be read.
bool take_part_numbers(run_reading &run, std::string_view rest) {
    run.reason = rest.size() < 19 || rest[0] == '\0'
                     ? "part number: /data/app/log/pack_tmp holds no package header"
                     : std::string("part number: the package is for model ") + rest[0] + rest[6] +
                           ", this unit is " + rest[12] + rest[18];
    return true;
}

bool misfit(run_reading &run, const char *otherwise) {
    run.stated = ending::part_number;
    if (run.reason.empty()) {
        run.reason = std::string("part number: the package is for another ") + otherwise;
    }
    return true;
}

bool misfit_model(run_reading &run, std::string_view) {
    return misfit(run, "model");
}

bool misfit_gnss(run_reading &run, std::string_view) {
    return misfit(run, "GNSS board");
}

bool misfit_radio(run_reading &run, std::string_view) {
    return misfit(run, "radio module");
}

// "0 bat1 24 "
bool take_power(run_reading &run, std::string_view rest) {
    const size_t percent = rest.find("bat1 ");
    if (percent != std::string_view::npos) {
        run.charge = first_word(rest.substr(percent + 5));
    }
    return reach<stage::power_measured>(run, rest);
}

// This text ends without a newline, so the next one follows on the same line.
bool take_question(run_reading &run, std::string_view rest) {
    read_printed(run, rest);
    return reach<stage::asked>(run, rest);
}

// With LEDs, pressing and releasing the power key twice declines.
bool take_led_key(run_reading &run, std::string_view) {
    if (++run.power_releases == 2) {
        run.answer = "the power key was pressed twice";
    }
    return true;
}

// With a screen, the first key event decides: "7 enter".
bool take_screen_key(run_reading &run, std::string_view rest) {
    if (rest.find(" enter") == std::string_view::npos) {
        return false;
    }
    const std::string code = first_word(rest);
    run.answer = code == "-1" ? "an event that is no key came first"
                              : "key " + code + " came first, not ok (2)";
    return true;
}

// The host record is read anew for each prompt; only a failure at the very start ends the run.
bool take_host_record(run_reading &run, std::string_view) {
    run.stated = run.reached < stage::asked ? ending::host_record : ending::no_indication;
    return true;
}

bool take_limit(run_reading &run, std::string_view rest) {
    if (rest.find(" sec...") == std::string_view::npos) {
        return false;
    }
    run.time_limit = first_word(rest);
    return reach<stage::copied>(run, rest);
}

bool take_attempt(run_reading &run, std::string_view) {
    run.reached = ++run.attempts == 1 ? stage::script_started : stage::script_started_again;
    run.script_runs = true;
    return true;
}

// A shell reports a command that was ended by a signal as 128 plus the signal's number.
bool take_status(run_reading &run, std::string_view rest) {
    int status = 0;
    if (!run.script_runs ||
        std::from_chars(rest.data(), rest.data() + rest.size(), status).ec != std::errc()) {
        return false;
    }
    run.script_runs = false;
    run.statuses.push_back(status);
    run.overran = run.overran || status == 128 + SIGTERM;
    return status != 0 || reach<stage::script_done>(run, rest);
}

bool take_versions_begin(run_reading &run, std::string_view) {
    run.versions_awaited = true;
    return true;
}

bool take_versions(run_reading &run, std::string_view) {
    run.versions_awaited = false;
    return true;
}

bool take_unreadable(run_reading &run, std::string_view) {
    if (run.versions_awaited) {
        run.stated = ending::versions_unreadable;
    }
    return run.versions_awaited;
}

bool take_display(run_reading &run, std::string_view) {
    run.display_failed = true;
    return true;
}

bool take_no_prompts(run_reading &run, std::string_view) {
    run.stated = run.display_failed ? ending::display : ending::no_prompts;
    return true;
}

// The first mark that a line contains counts.
constexpr mark printed_marks[] = {
    {"old host pack!", begin},
    {"gnss pack!", begin},
    {"radio pack!", begin},
    {"new host pack!", begin},
    {"usage: renewer KIND", end_by<ending::wrong_arguments>},
    {"package path mnt  not allow", end_by<ending::path_not_allowed>},
    {"get_local_host_info() failure", take_host_record},
    {"pn2=", take_part_numbers},
    {"gnss 6,7 PN not fit!", misfit_gnss},
    {"pn radio not fit", misfit_radio},
    {"2,3 PN not fit!", misfit_model},
    {"PN fit!", reach<stage::part_number_fits>},
    {"10,11 PN OK!", reach<stage::part_number_fits>},
    {"K618 RADIO !", reach<stage::part_number_fits>},
    {"open err", take_display},
    {"Update status init err", take_no_prompts},
    {"ext!!!!!!!!!!!!! power ", take_power},
    {"no ext power and baterry low", end_by<ending::battery>},
    {"coming................", take_question},
    {"get the code is :13.", take_led_key},
    {"key ", take_screen_key},
    {"user canceled  update program", end_by<ending::declined>},
    {"####update coming!####", reach<stage::updating>},
    {"updating111", reach<stage::updating>},
    {"wait ", take_limit},
    {"fork_exec: ", take_attempt},
    {"status ", take_status},
    {"this is new version checkupdate", take_versions_begin},
    {"data version ", take_versions},
    {"fopen: ", take_unreadable},
};

bool stop_script(run_reading &run, std::string_view) {
    run.overran = true;
    return true;
}

bool flag_end(run_reading &run, std::string_view) {
    run.flagged = true;
    return true;
}

constexpr mark command_marks[] = {
    {"cp -drf /firmware/update/*", reach<stage::copying>},
    {"killall install.sh", stop_script},
    {"touch /tmp/update_flag", flag_end},
    {"echo update_success", end_by<ending::updated>},
    {"touch /tmp/update_over", reach<stage::ending>},
    {"/etc/init.d/rc.stop", reach<stage::restarting>},
};

template <size_t count>
void take_line(run_reading &run, std::string_view line, const mark (&marks)[count]) {
    for (const mark &one : marks) {
        const size_t at = line.find(one.text);
        if (at != std::string_view::npos) {
            run.seen = one.take(run, line.substr(at + one.text.size())) || run.seen;
            return;
        }
    }
}

} // namespace

void read_printed(run_reading &run, std::string_view line) {
    take_line(run, line, printed_marks);
}

void read_command(run_reading &run, std::string_view line) {
    take_line(run, line, command_marks);
}

} // namespace simulator
