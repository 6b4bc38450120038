#include "simulator/demo/time_line.h"

#include <array>
#include <cstdio>

namespace simulator {

namespace {

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
        return happened.text.starts_with("0.") || happened.text == "1 s" ? nullptr : "sleeps";
    default:
        return nullptr;
    }
}

} // namespace

std::string line_begin(unit_time at, const char *label) {
    std::array<char, 32> begin;
    snprintf(begin.data(), begin.size(), "%8.3f s  %-8s", static_cast<double>(at.count()) / 1e3,
             label);
    return begin.data();
}

std::string readable_line(const event &happened) {
    const char *label = label_of(happened);
    if (label == nullptr) {
        return {};
    }
    return line_begin(happened.at, label) + without_line_end(happened.text);
}

} // namespace simulator
