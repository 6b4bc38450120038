#include "simulator/demo/led_view.h"

#include "simulator/demo/time_line.h"

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

constexpr size_t panel_width = 56; // the labels, lamps and blanks of `pattern`, and margins
constexpr unit_time settling_time = 100ms;

} // namespace

bool led_view::take(const event &happened) {
    if (happened.kind != event_kind::led) {
        return key.take(happened);
    }
    const size_t blank = happened.text.find(' ');
    lit[happened.text.substr(0, blank)] = !happened.text.ends_with(" 0");
    changed = happened.at;
    return true;
}

// The LEDs of a pattern are switched one after the other; a pattern stands when none has been
// switched for a while.
std::string led_view::told(unit_time now) {
    const std::string now_lit = pattern(false);
    if (now - settling_time < changed || now_lit == patterns[0] || now_lit == patterns[1]) {
        return {};
    }
    patterns = {now_lit, patterns[0]};
    return line_begin(changed, "panel") + now_lit + "\n";
}

std::string led_view::pattern(bool coloured) const {
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

std::string led_view::drawn(int, int) const {
    const std::string rule = "+" + std::string(panel_width, '-') + "+\n";
    const std::string held = "  key: " + key.name();
    return rule + "|  " + pattern(true) + "  |\n|" + held +
           std::string(panel_width - held.size(), ' ') + "|\n" + rule;
}

} // namespace simulator
