#include "simulator/terminal/led_view.h"

#include "simulator/terminal/time_line.h"

#include <algorithm>
#include <vector>

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

// An element of the panel, and the number of cells that it takes.
struct part {
    std::string text;
    size_t width;
};

part lamp(const led &one, bool on, bool coloured) {
    const std::string disc = on ? "\u25cf" : "\u25cb";
    const std::string shown =
        coloured ? std::string("\033[") + (on ? one.colour : "90") + "m" + disc + "\033[0m" : disc;
    return {shown + " " + one.label, 2 + std::string_view(one.label).size()};
}

std::vector<part> lamps(const std::map<std::string, bool> &lit, bool coloured) {
    std::vector<part> all;
    for (const led &one : leds) {
        const auto found = lit.find(one.name);
        all.push_back(lamp(one, found != lit.end() && found->second, coloured));
    }
    return all;
}

// The panel's power key has the code of "right". Keys that are not on the panel are shown while
// they are held.
std::vector<part> keys(const std::string &held) {
    std::vector<std::string> names = {"ok", "power"};
    const std::string pressed = held == "right" ? "power" : held;
    if (!pressed.empty() && std::ranges::find(names, pressed) == names.end()) {
        names.push_back(pressed);
    }
    std::vector<part> all;
    for (const std::string &name : names) {
        const bool down = name == pressed;
        all.push_back({(down ? "<<" : "[ ") + name + (down ? ">>" : " ]"), name.size() + 4});
    }
    return all;
}

// Arranges the parts in lines of a case that is `width` cells wide inside.
std::string in_case(const std::vector<part> &parts, size_t width) {
    std::string text, line = "|  ";
    size_t used = 2;
    const auto end_line = [&] {
        text += line + std::string(width > used ? width - used : 0, ' ') + "|\n";
        line = "|  ";
        used = 2;
    };
    for (const part &one : parts) {
        if (used > 2 && used + one.width + 2 > width) {
            end_line();
        }
        line += one.text + "  ";
        used += one.width + 2;
    }
    end_line();
    return text;
}

} // namespace

// A value that does not change whether the LED is lit is not a change of the panel.
bool led_view::take(const event &happened) {
    if (happened.kind != event_kind::led) {
        return key.take(happened);
    }
    bool &now_lit = lit[happened.text.substr(0, happened.text.find(' '))];
    const bool on = !happened.text.ends_with(" 0");
    if (now_lit == on) {
        return false;
    }
    now_lit = on;
    by_background = happened.background;
    return true;
}

// The LEDs of a pattern are switched one after the other. The pattern is complete when the thread
// that switched them sleeps or waits, however fast the clock is.
std::string led_view::line_for(const event &happened) {
    const bool pauses = happened.kind == event_kind::sleep || happened.kind == event_kind::wait;
    if (!(pauses && happened.background == by_background) && happened.kind != event_kind::exit) {
        return {};
    }
    std::string pattern;
    for (const part &one : lamps(lit, false)) {
        pattern += (pattern.empty() ? "" : "  ") + one.text;
    }
    if (pattern == patterns[0] || pattern == patterns[1]) {
        return {};
    }
    patterns = {pattern, patterns[0]};
    return line_begin(happened.at, "panel") + pattern + "\n";
}

std::string led_view::draw(const drawing_room &room) const {
    constexpr size_t widest = 58; // all lamps on one line
    const size_t width =
        std::clamp(static_cast<size_t>(std::max(room.columns, 2)) - 2, size_t{16}, widest);
    const std::string rule = "+" + std::string(width, '-') + "+\n";
    return rule + in_case(lamps(lit, room.colours), width) + "|" + std::string(width, ' ') + "|\n" +
           in_case(keys(key.name()), width) + rule;
}

} // namespace simulator
