#include "simulator/renewer_desk/play.h"

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

std::unique_ptr<panel_view> view_of(const run_setup &setup, const run_options &options) {
    if (!setup.offer) {
        return std::make_unique<screen_view>(options.pictures, ssd1327_panel().seen());
    }
    if (has_screen(setup.described)) {
        return std::make_unique<screen_view>(options.pictures, sa1230_panel().seen());
    }
    return std::make_unique<led_view>();
}

// The package is added before the described files, which may replace some of its own. A second
// start finds what the first one has left.
unit make_unit(const run_setup &setup, const run_options &options, bool with_package) {
    unit it;
    if (with_package) {
        take(it, *setup.offer);
        if (!setup.script.empty()) {
            it.install_script(content_of_file(setup.script.string()));
        }
    }
    it.clock_speed(options.speed).patience(options.patience).stop_when(stop_requested);
    describe(it, setup.described);
    if (!setup.program.empty()) {
        it.program(setup.program);
    }
    return it;
}

recorded_run run_in(unit &it, const run_setup &setup, front_panel &panel, key power) {
    recorded_run recorded;
    live_hand hand;
    const live_keys keys(hand, power);
    it.in_hand(hand)
        .before_start([&](const std::filesystem::path &tree) { recorded.before = files_of(tree); })
        .watch([&](const event &happened) {
            panel.show(happened);
            stop_requested = stop_requested || !panel.output_works();
        })
        .watch_screen([&](const picture &seen) { panel.show(seen); });
    recorded.end = it.run(setup.arguments);
    panel.finish();
    if (recorded.end.events.empty() && recorded.end.exit_status < 0 && !recorded.end.timed_out) {
        throw std::runtime_error("the unit could not be started");
    }
    recorded.after = files_of(*recorded.end.tree);
    return recorded;
}

} // namespace

void take_signals() {
    for (const int end : {SIGINT, SIGTERM, SIGHUP}) {
        signal(end, request_stop);
    }
    signal(SIGPIPE, SIG_IGN); // otherwise the unit would not be cleaned up
}

bool end_is_requested() {
    return stop_requested;
}

run_story play(const run_setup &setup, const run_options &options) {
    run_story story;
    story.described = setup.described;
    story.offer = setup.offer;
    story.arguments = setup.arguments;
    story.speed = options.speed;
    const std::unique_ptr<panel_view> view = view_of(setup, options);
    front_panel panel(*view, detect_output_style(options.plain, options.verbose));
    const key power = power_key_of(setup.described);
    printf("%s\n", setup.introduction.c_str());
    unit first = make_unit(setup, options, setup.offer.has_value());
    story.runs.push_back(run_in(first, setup, panel, power));
    if (story.runs.back().end.power_cut && setup.described.start_again) {
        printf("\nThe power is back; the updater is started on what was left.\n");
        run_setup again = setup;
        again.described.power_cut.reset();
        unit second = make_unit(again, options, false);
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
        throw usage_error(screen ? "--answer takes ok, other, decline or none with a screen"
                                 : "--answer takes ok, power, decline or none with LEDs");
    }
    return {};
}

} // namespace simulator
