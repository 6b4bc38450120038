// One whole update on a simulated unit, shown as it happens.

#include "simulator/demo/demo_options.h"
#include "simulator/demo/front_panel.h"
#include "simulator/demo/led_view.h"
#include "simulator/demo/screen_view.h"
#include "simulator/unit/package.h"
#include "simulator/unit/unit.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <stdexcept>
#include <string>
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

// A directory of the desk that is gone with the demo.
class desk_directory {
public:
    desk_directory() {
        std::string name = std::filesystem::temp_directory_path() / "renewer-demo.XXXXXX";
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error(name + ": " + strerror(errno));
        }
        path = name;
    }
    ~desk_directory() { std::filesystem::remove_all(path); }
    desk_directory(const desk_directory &) = delete;
    desk_directory &operator=(const desk_directory &) = delete;

    std::filesystem::path path;
};

using command_arguments = std::vector<std::string>;

// What is shown with one model of the unit.
struct scene {
    const char *model; // as the user names it
    const char *told;
    command_arguments (*describe)(unit &, const demo_options &, const desk_directory &);
    std::unique_ptr<panel_view> (*view)(const demo_options &);
};

// A package for this unit is made, and taken apart as the unit's main application does it.
command_arguments describe_update(unit &it, const char *pn, const demo_options &chosen,
                                  const desk_directory &desk) {
    const std::filesystem::path package = desk.path / "update_demo_b20240523.bin";
    make_package(package, pn, chosen.script.empty() ? working_script : read_whole(chosen.script));
    it.part_number(pn).package(package).acknowledge_end(2s);
    return {"3", "/media/sda1/update_demo_b20240523.bin"};
}

command_arguments describe_led_unit(unit &it, const demo_options &chosen,
                                    const desk_directory &desk) {
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
        used_wrongly("--built-in and --pictures do not go with LEDs");
    }
    return describe_update(it, "1013563400120000", chosen, desk);
}

std::unique_ptr<panel_view> make_led_view(const demo_options &) {
    return std::make_unique<led_view>();
}

command_arguments describe_screen_unit(unit &it, const demo_options &chosen,
                                       const desk_directory &desk) {
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
    return describe_update(it, "1016563400120000", chosen, desk);
}

std::unique_ptr<panel_view> make_picture_view(const demo_options &chosen, const picture &dark) {
    const std::string directory = chosen.pictures.empty() ? "build/demo-pictures" : chosen.pictures;
    printf("The pictures that it shows come into %s.\n", directory.c_str());
    return std::make_unique<screen_view>(directory, dark);
}

std::unique_ptr<panel_view> make_screen_view(const demo_options &chosen) {
    return make_picture_view(chosen, sa1230_panel().seen());
}

// No update: the example of the display middleware draws its status screen.
command_arguments describe_oled_unit(unit &it, const demo_options &, const desk_directory &) {
    it.program(OLED_STATUS).file("/reserve/battery.bmp", read_whole(OLED_STATUS_BATTERY));
    return {"/dev/spidev0.0", "/reserve/battery.bmp", "60"};
}

std::unique_ptr<panel_view> make_oled_view(const demo_options &chosen) {
    return make_picture_view(chosen, ssd1327_panel().seen());
}

constexpr std::array<scene, 3> scenes = {{
    {"led",
     "A unit with LEDs; its application has unpacked a package into /firmware/update.\nrenewer",
     describe_led_unit, make_led_view},
    {"screen",
     "A unit with a colour LCD; its application has unpacked a package into "
     "/firmware/update.\nrenewer",
     describe_screen_unit, make_screen_view},
    {"oled",
     "A unit with a grey OLED; a program draws on it through the display middleware.\n"
     "renewer-oled-status",
     describe_oled_unit, make_oled_view},
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
    const desk_directory desk;
    unit it;
    it.clock_speed(chosen.speed).patience(std::chrono::seconds(600)).stop_when(stop_requested);
    const command_arguments arguments = playing.describe(it, chosen, desk);

    const std::unique_ptr<panel_view> view = playing.view(chosen);
    front_panel panel(*view, isatty(STDOUT_FILENO) != 0 && !chosen.plain);
    it.watch([&](const event &happened) { panel.show(happened); });
    it.watch_screen([&](const picture &seen) { panel.show(seen); });
    printf("%s", playing.told);
    for (const std::string &argument : arguments) {
        printf(" %s", argument.c_str());
    }
    printf("\n");
    const outcome end = it.run(arguments);
    panel.finish();
    if (end.exit_status != 0 && end.exit_status != 1) {
        return 1; // the run did not come to its end
    }
    if (end.exists("/tmp/update_flag")) {
        printf("\nWhat the unit has in /data now:\n%s", end.listing("/data").c_str());
    }
    printf("\nPeak memory of the program: %ld KiB\n", end.peak_memory_kib);
    return 0;
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
