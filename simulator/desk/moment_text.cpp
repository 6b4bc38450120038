#include "simulator/desk/moment_text.h"

#include "simulator/desk/label.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

namespace simulator {

namespace {

using namespace std::string_literals;

// The question is on display when the program waits for a key.
constexpr const char question[] = "wait ";

constexpr unit_time usual_hold = 100ms;
constexpr double longest_seconds = 86400;

constexpr std::array<std::pair<std::string_view, double>, 3> units = {
    {{"ms", 0.001}, {"min", 60}, {"s", 1}}};

std::string_view trimmed(std::string_view text) {
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<unit_time> time_of(std::string_view text) {
    text = trimmed(text);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const std::string_view unit = trimmed(text.substr(static_cast<size_t>(end - text.data())));
    for (const auto &[name, seconds] : units) {
        if (error == std::errc() && unit == name && number >= 0 &&
            number * seconds <= longest_seconds) {
            return unit_time(std::llround(number * seconds * 1000));
        }
    }
    return std::nullopt;
}

key parse_key(std::string_view text) {
    if (const std::optional<key> code = key_named(text)) {
        return *code;
    }
    std::string known;
    for (const key_name &one : key_names) {
        known += (known.empty() ? "" : ", ") + std::string(one.name);
    }
    throw std::invalid_argument("there is no key \"" + std::string(text) + "\"; keys are " + known);
}

} // namespace

unit_time parse_time(std::string_view text) {
    if (const std::optional<unit_time> time = time_of(text)) {
        return *time;
    }
    throw std::invalid_argument("\"" + std::string(text) +
                                "\" is not a time; expected 2s, 300ms or 2min, up to a day");
}

moment parse_moment(std::string_view text, bool from_question) {
    if (const std::optional<unit_time> time = time_of(text)) {
        return after(from_question ? question : "", *time);
    }
    unit_time delay{};
    std::string_view line = trimmed(text);
    if (const size_t plus = line.rfind('+'); plus != std::string_view::npos) {
        if (const std::optional<unit_time> time = time_of(line.substr(plus + 1))) {
            delay = *time;
            line = trimmed(line.substr(0, plus));
        }
    }
    if (line.empty()) {
        throw std::invalid_argument("a moment is missing; expected 2s, start+2s or \"runs "
                                    "sync\"");
    }
    return after(line == "start"      ? ""s
                 : line == "question" ? question
                                      : line_of_labelled(line),
                 delay);
}

std::optional<unit_time> parse_acknowledgement(std::string_view text) {
    return text == "never" ? std::nullopt : std::optional(parse_time(text));
}

key_press parse_press(std::string_view text) {
    const size_t at = text.find('@');
    if (at == std::string_view::npos) {
        throw std::invalid_argument("\"" + std::string(text) +
                                    "\" is not a key press; expected ok@2s");
    }
    std::string_view when = text.substr(at + 1);
    unit_time hold = usual_hold;
    if (const size_t held = when.rfind(" for "); held != std::string_view::npos) {
        hold = parse_time(when.substr(held + 5));
        when = when.substr(0, held);
    }
    return {parse_key(trimmed(text.substr(0, at))), parse_moment(when, true), hold};
}

} // namespace simulator
