// One whole update on a simulated unit, shown as it happens.

#include "simulator/demo_options.h"
#include "simulator/front_panel.h"
#include "simulator/led_view.h"
#include "simulator/screen_view.h"
#include "simulator/unit.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <unistd.h>

namespace {

using namespace simulator;

std::atomic<bool> stop_requested = false;

void request_stop(int) {
    stop_requested = true;
}

std::string read_whole(const std::string &path) {
    FILE *file = fopen(path.c_str(), "re");
    if (file == nullptr) {
        used_wrongly(path + ": " + strerror(errno));
    }
    std::string text;
    char bytes[4096];
    for (size_t size; (size = fread(bytes, 1, sizeof(bytes), file)) > 0;) {
        text.append(bytes, size);
    }
    fclose(file);
    return text;
}

constexpr const char working_script[] = "#!/bin/sh\n"
                                        "echo writing the new firmware\n"
                                        "sleep 4\n"
                                        "echo done\n";

// What is shown with one model of the unit.
struct scene {
    const char *model; // as the user names it
    const char *told;
    void (*describe)(unit &, const demo_options &);
    std::unique_ptr<panel_view> (*view)(const demo_options &);
};

void describe_led_unit(unit &it, const demo_options &chosen) {
    it.model("13");
    const std::string asked = "led Light_Gps 255";
    const key power = key::right; // of this panel
    if (chosen.answer == "ok") {
        it.press(key::ok, after(asked, 2s));
    } else if (chosen.answer == "power") {
        it.press(power, after(asked, 2s));
    } else if (chosen.answer == "decline") {
        it.press(power, after(asked, 2s)).press(power, after(asked, 3s));
    } else if (chosen.answer != "none") {
        used_wrongly("--answer takes ok, power, decline or none with LEDs");
    }
    if (chosen.built_in || !chosen.pictures.empty()) {
        used_wrongly("--built-in and --pictures go with --model screen");
    }
}

std::unique_ptr<panel_view> make_led_view(const demo_options &) {
    return std::make_unique<led_view>();
}

void describe_screen_unit(unit &it, const demo_options &chosen) {
    it.model("16");
    if (!chosen.built_in) {
        it.with_prompt_pictures();
    }
    const moment asked = after("wait 120 s", 2s);
    if (chosen.answer == "ok") {
        it.press(key::ok, asked);
    } else if (chosen.answer == "other" || chosen.answer == "decline") {
        it.press(key::esc, asked);
    } else if (chosen.answer != "none") {
        used_wrongly("--answer takes ok, other, decline or none with a screen");
    }
}

std::unique_ptr<panel_view> make_screen_view(const demo_options &chosen) {
    const std::string directory = chosen.pictures.empty() ? "build/demo-pictures" : chosen.pictures;
    printf("The pictures that it shows come into %s.\n", directory.c_str());
    return std::make_unique<screen_view>(directory, sa1230_panel().seen());
}

constexpr std::array<scene, 2> scenes = {{
    {"led", "A unit with LEDs", describe_led_unit, make_led_view},
    {"screen", "A unit with a colour LCD", describe_screen_unit, make_screen_view},
}};

const scene &scene_of(const std::string &model) {
    std::string models;
    for (const scene &one : scenes) {
        if (model == one.model) {
            return one;
        }
        models += std::string(models.empty() ? "" : " or ") + one.model;
    }
    used_wrongly("--model takes " + models);
}

int run_demo(const demo_options &chosen) {
    const scene &playing = scene_of(chosen.model);
    unit it;
    it.clock_speed(chosen.speed)
        .patience(std::chrono::seconds(600))
        .stop_when(stop_requested)
        .install_script(chosen.script.empty() ? working_script : read_whole(chosen.script))
        .acknowledge_end(2s);
    playing.describe(it, chosen);

    printf("%s; an update for its GNSS board lies in /firmware/update.\n", playing.told);
    const std::unique_ptr<panel_view> view = playing.view(chosen);
    front_panel panel(*view, isatty(STDOUT_FILENO) != 0 && !chosen.plain);
    it.watch([&](const event &happened) { panel.show(happened); });
    it.watch_screen([&](const picture &seen) { panel.show(seen); });
    puts("renewer 1 /media/sda1/update 34");
    const outcome end = it.run({"1", "/media/sda1/update", "34"});
    panel.finish();
    printf("\nWhat the unit has in /data now:\n%s", end.listing("/data").c_str());
    printf("\nPeak memory of the updater: %ld KiB\n", end.peak_memory_kib);
    return end.exit_status == 0 || end.exit_status == 1 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    const demo_options chosen = parse_options(argc, argv);
    for (const int end : {SIGINT, SIGTERM, SIGHUP}) {
        signal(end, request_stop);
    }
    try {
        return run_demo(chosen);
    } catch (const std::exception &trouble) {
        fprintf(stderr, "demo: %s\n", trouble.what());
        return 1;
    }
}
