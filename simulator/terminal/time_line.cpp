#include "simulator/terminal/time_line.h"

#include "simulator/desk/label.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace simulator {

namespace {

// Without the newline, and with control characters replaced.
std::string printable(const std::string &text) {
    std::string shown = text.substr(0, text.find_last_not_of("\r\n") + 1);
    std::ranges::replace_if(
        shown, [](unsigned char byte) { return byte < ' ' || byte == 127; }, '?');
    return shown;
}

// Events without a line of their own: LED changes, pictures, transfers, waits and short sleeps.
bool is_quiet(const event &happened) {
    switch (happened.kind) {
    case event_kind::led:
    case event_kind::wait:
    case event_kind::spi:
    case event_kind::screen:
        return true;
    case event_kind::sleep:
        return happened.text.starts_with("0.") || happened.text == "1 s";
    default:
        return false;
    }
}

} // namespace

std::string line_begin(unit_time at, std::string_view label) {
    std::array<char, 32> begin;
    snprintf(begin.data(), begin.size(), "%8.3f s  %-8.*s", static_cast<double>(at.count()) / 1e3,
             static_cast<int>(label.size()), label.data());
    return begin.data();
}

std::string readable_line(const event &happened) {
    if (is_quiet(happened)) {
        return {};
    }
    return line_begin(happened.at, label_of(happened.kind)) + printable(happened.text);
}

} // namespace simulator
