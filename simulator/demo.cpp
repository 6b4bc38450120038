// One whole update on a simulated unit, shown as it happens.

#include "simulator/front_panel.h"
#include "simulator/unit.h"

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <getopt.h>
#include <unistd.h>

namespace {

using namespace simulator;

constexpr const char help[] =
    "usage: ./dev demo [OPTIONS]\n"
    "\n"
    "Runs one whole update on a simulated unit with LEDs and shows it as it happens: the front\n"
    "panel below the time line on a terminal, the time line alone otherwise.\n"
    "\n"
    "  --answer ok|power|decline|none   what the user does when asked (default: ok)\n"
    "  --script FILE                    install script of the update, instead of one that works\n"
    "  --speed TIMES                    how much faster than real the unit's clock runs (default: "
    "2)\n"
    "  --plain                          the time line alone, also on a terminal\n"
    "  --help                           this text\n"
    "\n"
    "Exit status: 0 when the run ended as a run does, 1 otherwise, 2 used wrongly.\n";

struct options {
    std::string answer = "ok";
    std::string script;
    double speed = 2;
    bool plain = false;
};

std::atomic<bool> stop_requested = false;

void request_stop(int) {
    stop_requested = true;
}

[[noreturn]] void used_wrongly(const char *why) {
    fprintf(stderr, "demo: %s; --help tells more\n", why);
    exit(2);
}

options parse(int argc, char **argv) {
    const option known[] = {
        {"answer", required_argument, nullptr, 'a'}, {"script", required_argument, nullptr, 's'},
        {"speed", required_argument, nullptr, 't'},  {"plain", no_argument, nullptr, 'p'},
        {"help", no_argument, nullptr, 'h'},         {}};
    options chosen;
    for (int found; (found = getopt_long(argc, argv, "h", known, nullptr)) != -1;) {
        switch (found) {
        case 'a':
            chosen.answer = optarg;
            break;
        case 's':
            chosen.script = optarg;
            break;
        case 't':
            chosen.speed = strtod(optarg, nullptr);
            break;
        case 'p':
            chosen.plain = true;
            break;
        case 'h':
            fputs(help, stdout);
            exit(0);
        default:
            exit(2);
        }
    }
    if (!(chosen.speed >= 0.1 && chosen.speed <= 1000)) {
        used_wrongly("--speed takes a number from 0.1 to 1000");
    }
    if (optind != argc) {
        used_wrongly("too many arguments");
    }
    return chosen;
}

std::string read_whole(const std::string &path) {
    FILE *file = fopen(path.c_str(), "re");
    if (file == nullptr) {
        used_wrongly((path + ": " + strerror(errno)).c_str());
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

void answer(unit &it, const std::string &how) {
    const std::string asked = "led Light_Gps 255";
    if (how == "ok") {
        it.press(key::ok, after(asked, 2s));
    } else if (how == "power") {
        it.press(key::right, after(asked, 2s)); // the power key of this panel
    } else if (how == "decline") {
        it.press(key::right, after(asked, 2s)).press(key::right, after(asked, 3s));
    } else if (how != "none") {
        used_wrongly("--answer takes ok, power, decline or none");
    }
}

int run_demo(const options &chosen) {
    unit it;
    it.model("13")
        .clock_speed(chosen.speed)
        .patience(std::chrono::seconds(600))
        .stop_when(stop_requested)
        .install_script(chosen.script.empty() ? working_script : read_whole(chosen.script))
        .acknowledge_end(2s);
    answer(it, chosen.answer);

    front_panel panel(isatty(STDOUT_FILENO) != 0 && !chosen.plain);
    it.watch([&](const event &happened) { panel.show(happened); });
    puts("A unit with LEDs; an update for its GNSS board lies in /firmware/update.");
    puts("renewer 1 /media/sda1/update 34");
    const outcome end = it.run({"1", "/media/sda1/update", "34"});
    panel.finish();
    printf("\nWhat the unit has in /data now:\n%s", end.listing("/data").c_str());
    return end.exit_status == 0 || end.exit_status == 1 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv) {
    const options chosen = parse(argc, argv);
    signal(SIGINT, request_stop);
    signal(SIGTERM, request_stop);
    try {
        return run_demo(chosen);
    } catch (const std::exception &trouble) {
        fprintf(stderr, "demo: %s\n", trouble.what());
        return 1;
    }
}
