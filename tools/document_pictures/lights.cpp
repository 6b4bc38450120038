#include "pictures.h"
#include "svg.h"

#include "simulator/unit/unit.h"

#include <algorithm>
#include <array>
#include <map>
#include <stdexcept>

namespace document_pictures {

using namespace simulator;

namespace {

struct lamp {
    const char *name;
    const char *colour;
};
constexpr std::array<lamp, 6> lamps = {{
    {"Light_Static_Data", "#e0a800"},
    {"Light_Gps", "#2e9e5b"},
    {"Light_Data_Se", "#2e9e5b"},
    {"Light_Data_Re", "#2e9e5b"},
    {"Light_Charge", "#d03a3a"},
    {"Light_Power", "#2e9e5b"},
}};

// A prompt, of which the first seconds are shown.
struct prompt {
    const char *title;
    const char *note;
    const char *part_number;
    std::vector<std::string> steps; // of the prompt driver
    double seconds;
};

// The driver waits in these steps until the running indication has lasted longer than the drawing.
const std::string step_beside = "0.1 s";
const moment seen_enough = after("led Light_Power 255", 0s, 5);

const std::array<prompt, 5> prompts = {{
    {"The question", "until a key answers, at most 120 s", "10135634", {"1"}, 4},
    {"The update runs",
     "until its script has ended",
     "10135634",
     {"3", "until=/tmp/enough", "2"},
     4},
    {"Success", "part-number characters 4 and 5 from 56 to 59", "10135634", {"2"}, 4},
    {"Success", "all other part numbers", "10135534", {"2"}, 4},
    {"Failure, or not allowed", "three flashes, then a pause", "10135634", {"4"}, 9},
}};

constexpr double second_width = 70, lane_height = 15, bar_height = 10;
constexpr double label_width = 110, block_height = lamps.size() * lane_height + 66;

double seconds_of(const std::string &text) {
    return std::stod(text);
}

// Draws the bars from the order of the switching and the requested waits in between, so that the
// load of the machine has no influence.
void draw_bars(svg &on, double left, double top, const outcome &end, double shown) {
    std::map<std::string, double> lit_since;
    double now = 0;
    const auto draw = [&](const std::string &name, double since, double until) {
        const auto lane = std::ranges::find(lamps, name, &lamp::name);
        on.box(left + since * second_width,
               top + static_cast<double>(lane - lamps.begin()) * lane_height,
               (until - since) * second_width, bar_height, lane->colour);
    };
    for (const event &happened : end.events) {
        if (happened.kind == event_kind::sleep || happened.kind == event_kind::wait) {
            now += happened.text == step_beside ? 0 : seconds_of(happened.text);
        } else if (happened.kind == event_kind::led) {
            const std::string name = happened.text.substr(0, happened.text.find(' '));
            if (!happened.text.ends_with(" 0")) {
                lit_since.emplace(name, now);
            } else if (const auto lit = lit_since.extract(name); lit && now > lit.mapped()) {
                draw(name, lit.mapped(), std::min(now, shown));
            }
        }
        if (now >= shown) {
            break;
        }
    }
    for (const auto &[name, since] : lit_since) {
        draw(name, since, shown);
    }
}

void draw_prompt(svg &on, double left, double top, const prompt &about, const outcome &end) {
    on.words(left, top + 16, about.title, "start", true);
    on.words(left, top + 32, about.note);
    const double first_lane = top + 42;
    const double width = about.seconds * second_width;
    for (size_t i = 0; i < lamps.size(); ++i) {
        const double y = first_lane + static_cast<double>(i) * lane_height;
        on.words(left + label_width - 8, y + bar_height - 1, lamps[i].name, "end");
        on.box(left + label_width, y, width, bar_height, "#e6e6e2");
    }
    draw_bars(on, left + label_width, first_lane, end, about.seconds);
    for (int second = 0; second <= about.seconds; ++second) {
        const double x = left + label_width + second * second_width;
        on.box(x, first_lane - 2, 0.5, lamps.size() * lane_height, "#444");
        on.words(x, first_lane + lamps.size() * lane_height + 11, std::to_string(second) + " s",
                 "middle");
    }
}

} // namespace

std::string draw_lights() {
    constexpr double margin = 14, gap = 28;
    constexpr double column = label_width + 4 * second_width + gap;
    svg drawing(static_cast<int>(2 * margin + 2 * column), static_cast<int>(3 * block_height + 12));
    for (size_t i = 0; i < prompts.size(); ++i) {
        const outcome end = unit()
                                .part_number(prompts[i].part_number)
                                .without("/dev/input/event1")
                                .clock_speed(prompts[i].steps[0] == "1" ? 400 : 20)
                                .write("/tmp/enough", "", seen_enough)
                                .program(PROMPT_DRIVER)
                                .run(prompts[i].steps);
        if (end.exit_status != 0) {
            throw std::runtime_error("the prompts cannot be run");
        }
        const auto row = i / 2;
        draw_prompt(drawing, margin + static_cast<double>(i % 2) * column,
                    static_cast<double>(row) * block_height, prompts[i], end);
    }
    return drawing.drawn();
}

} // namespace document_pictures
