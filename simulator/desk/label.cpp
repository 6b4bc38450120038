#include "simulator/desk/label.h"

#include <array>

namespace simulator {

namespace {

struct label {
    event_kind kind;
    std::string_view text;
};

constexpr std::array<label, 13> labels = {{
    {event_kind::out, "prints"},
    {event_kind::err, "reports"},
    {event_kind::led, "led"},
    {event_kind::shell, "runs"},
    {event_kind::alarm, "limit"},
    {event_kind::signal, "signal"},
    {event_kind::sleep, "sleeps"},
    {event_kind::wait, "waits"},
    {event_kind::spi, "spi"},
    {event_kind::screen, "screen"},
    {event_kind::call, "unit"},
    {event_kind::act, "desk"},
    {event_kind::exit, "ended"},
}};

} // namespace

std::string_view label_of(event_kind kind) {
    return labels.at(static_cast<size_t>(kind)).text;
}

std::string line_of_labelled(std::string_view text) {
    for (const label &one : labels) {
        if (text.starts_with(one.text) && text.substr(one.text.size()).starts_with(' ')) {
            return std::string(name_of(one.kind)) + std::string(text.substr(one.text.size()));
        }
    }
    return std::string(text);
}

} // namespace simulator
