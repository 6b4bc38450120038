#include "simulator/demo/demo_options.h"

#include <cstdio>
#include <cstdlib>
#include <getopt.h>

namespace simulator {

namespace {

constexpr const char help[] =
    "usage: ./dev demo [OPTIONS]\n"
    "\n"
    "Runs one whole update on a simulated unit and shows it as it happens: the front panel below\n"
    "the time line on a terminal, the time line alone otherwise.\n"
    "\n"
    "  --model MODEL        led     a unit with LEDs (default)\n"
    "                       screen  one with a colour LCD\n"
    "                       oled    no update: the display middleware's example on a grey OLED\n"
    "  --answer ANSWER      what the user does when asked:\n"
    "                         ok     presses the ok key (default)\n"
    "                         power  LEDs: presses the power key once, which confirms too\n"
    "                         other  screen: presses another key, which declines\n"
    "                         decline  declines: the power key twice, another key on a screen\n"
    "                         none   nothing\n"
    "  --script FILE        install script of the update, instead of one that works\n"
    "  --built-in           screen: a unit without picture files shows the built-in pictures\n"
    "  --pictures DIR       displays: where each picture that was shown is written as a PNG file\n"
    "                       (default: build/demo-pictures)\n"
    "  --speed TIMES        how much faster than real the unit's clock runs (default: 2)\n"
    "  --plain              the time line alone, also on a terminal\n"
    "  --help               this text\n"
    "\n"
    "Exit status: 0 when the run ended as a run does, 1 otherwise, 2 used wrongly.\n";

constexpr option known[] = {{"model", required_argument, nullptr, 'm'},
                            {"answer", required_argument, nullptr, 'a'},
                            {"script", required_argument, nullptr, 's'},
                            {"built-in", no_argument, nullptr, 'b'},
                            {"pictures", required_argument, nullptr, 'd'},
                            {"speed", required_argument, nullptr, 't'},
                            {"plain", no_argument, nullptr, 'p'},
                            {"help", no_argument, nullptr, 'h'},
                            {}};

void take_option(int found, demo_options &chosen) {
    switch (found) {
    case 'm':
        chosen.model = optarg;
        break;
    case 'a':
        chosen.answer = optarg;
        break;
    case 's':
        chosen.script = optarg;
        break;
    case 'b':
        chosen.built_in = true;
        break;
    case 'd':
        chosen.pictures = optarg;
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

} // namespace

void used_wrongly(const std::string &why) {
    fprintf(stderr, "demo: %s; --help tells more\n", why.c_str());
    exit(2);
}

demo_options parse_options(int argc, char **argv) {
    demo_options chosen;
    for (int found; (found = getopt_long(argc, argv, "h", known, nullptr)) != -1;) {
        take_option(found, chosen);
    }
    if (!(chosen.speed >= 0.1 && chosen.speed <= 1000)) {
        used_wrongly("--speed takes a number from 0.1 to 1000");
    }
    if (optind != argc) {
        used_wrongly("too many arguments");
    }
    return chosen;
}

} // namespace simulator
