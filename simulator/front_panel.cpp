#include "simulator/front_panel.h"

#include <array>
#include <cstdio>

namespace simulator {

namespace {

struct led {
    const char *name;
    const char *label;
    const char *colour; // SGR parameters (ECMA-48)
};

constexpr std::array<led, 6> leds = {{
    {"Light_Static_Data", "STATIC", "33"},
    {"Light_Gps", "GPS", "32"},
    {"Light_Data_Se", "DATA>", "32"},
    {"Light_Data_Re", "DATA<", "32"},
    {"Light_Charge", "CHARGE", "31"},
    {"Light_Power", "POWER", "32"},
}};

constexpr int panel_lines = 4;
constexpr int panel_width = 56; // what the labels, lamps and blanks of `pattern` take, and margins
constexpr unit_time settling_time = 100ms;

std::string without_line_end(const std::string &text) {
    return text.substr(0, text.find_last_not_of("\r\n") + 1);
}

// How the kinds of events are called on the desk; null for those that get no line.
const char *label_of(const event &happened) {
    switch (happened.kind) {
    case event_kind::out:
        return "prints";
    case event_kind::err:
        return "reports";
    case event_kind::shell:
        return "runs";
    case event_kind::alarm:
        return "limit";
    case event_kind::signal:
        return "signal";
    case event_kind::call:
        return "unit";
    case event_kind::act:
        return "desk";
    case event_kind::exit:
        return "ended";
    case event_kind::sleep:
        return happened.text.starts_with("0.") ? nullptr : "sleeps";
    default:
        return nullptr;
    }
}

std::string line_begin(unit_time at, const char *label) {
    std::array<char, 32> begin;
    snprintf(begin.data(), begin.size(), "%8.3f s  %-8s", static_cast<double>(at.count()) / 1e3,
             label);
    return begin.data();
}

} // namespace

std::string readable_line(const event &happened) {
    const char *label = label_of(happened);
    if (label == nullptr) {
        return {};
    }
    return line_begin(happened.at, label) + without_line_end(happened.text);
}

void front_panel::show(const event &happened) {
    erase();
    tell_settled_pattern(happened.at);
    if (const std::string line = readable_line(happened); !line.empty()) {
        printf("%s\n", line.c_str());
    }
    take(happened);
    draw();
    fflush(stdout);
}

void front_panel::finish() {
    erase();
    fflush(stdout);
}

void front_panel::take(const event &happened) {
    const size_t blank = happened.text.find(' ');
    const std::string first = happened.text.substr(0, blank);
    const std::string rest = blank == std::string::npos ? "" : happened.text.substr(blank + 1);
    if (happened.kind == event_kind::led) {
        lit[first] = rest != "0";
        changed = happened.at;
    } else if (happened.kind == event_kind::act && first == "press") {
        key = rest;
    } else if (happened.kind == event_kind::act && first == "release") {
        key.clear();
    }
}

// The LEDs of a pattern are switched one after the other; a pattern stands when none has been
// switched for a while.
void front_panel::tell_settled_pattern(unit_time now) {
    if (on_terminal || now < changed + settling_time) {
        return;
    }
    const std::string now_lit = pattern(false);
    if (now_lit != told[0] && now_lit != told[1]) {
        told = {now_lit, told[0]};
        printf("%s%s\n", line_begin(changed, "panel").c_str(), now_lit.c_str());
    }
}

std::string front_panel::pattern(bool coloured) const {
    std::string text;
    for (const led &one : leds) {
        const auto found = lit.find(one.name);
        const bool on = found != lit.end() && found->second;
        const std::string lamp = on ? "\u25cf" : "\u25cb";
        text += text.empty() ? "" : "  ";
        text += coloured ? std::string("\033[") + (on ? one.colour : "90") + "m" + lamp + "\033[0m"
                         : lamp;
        text += std::string(" ") + one.label;
    }
    return text;
}

void front_panel::erase() {
    if (drawn) {
        printf("\033[%dF\033[J", panel_lines); // to the panel's first line, and clear from there
    }
    drawn = false;
}

void front_panel::draw() {
    if (!on_terminal) {
        return;
    }
    const std::string rule(panel_width, '-');
    printf("+%s+\n|  %s  |\n|  key: %-*s|\n+%s+\n", rule.c_str(), pattern(true).c_str(),
           panel_width - 7, key.empty() ? "none" : key.c_str(), rule.c_str());
    drawn = true;
}

} // namespace simulator
