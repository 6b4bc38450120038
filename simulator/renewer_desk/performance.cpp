#include "simulator/renewer_desk/performance.h"

#include "simulator/terminal/front_panel.h"
#include "simulator/terminal/led_view.h"
#include "simulator/terminal/live_keys.h"
#include "simulator/terminal/screen_view.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace simulator {

namespace {

std::atomic<bool> stop_requested = false;

void request_stop(int) {
    stop_requested = true;
}

std::unique_ptr<panel_view> view_of(const performance &playing, const run_options &options) {
    if (!playing.offer) {
        return std::make_unique<screen_view>(options.pictures, ssd1327_panel().seen());
    }
    if (has_screen(playing.described)) {
        return std::make_unique<screen_view>(options.pictures, sa1230_panel().seen());
    }
    return std::make_unique<led_view>();
}

// The package comes before what the description says of files, which may be of the package. A
// second start finds what the first has left.
unit made(const performance &playing, const run_options &options, bool with_package) {
    unit it;
    if (with_package) {
        take(it, *playing.offer);
        if (!playing.script.empty()) {
            it.install_script(content_of_file(playing.script.string()));
        }
    }
    it.clock_speed(options.speed).patience(options.patience).stop_when(stop_requested);
    describe(it, playing.described);
    if (!playing.program.empty()) {
        it.program(playing.program);
    }
    return it;
}

told_run run_in(unit &it, const performance &playing, front_panel &panel, key power) {
    told_run told;
    live_hand hand;
    const live_keys keys(hand, power);
    it.in_hand(hand)
        .before_start([&](const std::filesystem::path &tree) { told.before = files_of(tree); })
        .watch([&](const event &happened) {
            panel.show(happened);
            stop_requested = stop_requested || !panel.heard();
        })
        .watch_screen([&](const picture &seen) { panel.show(seen); });
    told.end = it.run(playing.arguments);
    panel.finish();
    if (told.end.events.empty() && told.end.exit_status < 0 && !told.end.timed_out) {
        throw std::runtime_error("the unit could not be started");
    }
    told.after = files_of(*told.end.tree);
    return told;
}

} // namespace

void take_signals() {
    for (const int end : {SIGINT, SIGTERM, SIGHUP}) {
        signal(end, request_stop);
    }
    signal(SIGPIPE, SIG_IGN); // the unit must be put away first
}

bool end_is_requested() {
    return stop_requested;
}

run_story play(const performance &playing, const run_options &options) {
    run_story story;
    story.described = playing.described;
    story.offer = playing.offer;
    story.arguments = playing.arguments;
    story.speed = options.speed;
    const std::unique_ptr<panel_view> view = view_of(playing, options);
    front_panel panel(*view, showing_here(options.plain, options.verbose));
    const key power = power_key_of(playing.described);
    printf("%s\n", playing.told.c_str());
    unit first = made(playing, options, playing.offer.has_value());
    story.runs.push_back(run_in(first, playing, panel, power));
    if (story.runs.back().end.power_cut && playing.described.start_again) {
        printf("\nThe power is back; the updater is started on what was left.\n");
        performance again = playing;
        again.described.power_cut.reset();
        unit second = made(again, options, false);
        second.started_on(story.runs.back().end);
        story.runs.push_back(run_in(second, again, panel, power));
    }
    story.result = verdict_of(story.runs.back().end);
    return story;
}

std::vector<key_press> keys_of_answer(const std::string &answer, bool screen) {
    const auto press = [](const char *text) { return parse_press(text); };
    if (answer == "ok") {
        return {press("ok@2s")};
    }
    if (answer == "power" && !screen) {
        return {press("power@2s")};
    }
    if (answer == "decline" && !screen) {
        return {press("power@2s"), press("power@3s")};
    }
    if ((answer == "decline" || answer == "other") && screen) {
        return {press("esc@2s")};
    }
    if (answer != "none") {
        throw misused(screen ? "--answer takes ok, other, decline or none with a screen"
                             : "--answer takes ok, power, decline or none with LEDs");
    }
    return {};
}

} // namespace simulator
