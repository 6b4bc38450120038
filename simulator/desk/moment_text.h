#pragma once

#include "simulator/unit/unit.h"

#include <optional>
#include <string_view>

// Parse times, moments and keys as people write them. Text that cannot be parsed throws
// std::invalid_argument with a hint at what is expected.
namespace simulator {

// "2s", "1.5 s", "300ms", "2 min"
unit_time parse_time(std::string_view text);

// A time ("2s"), counted from the question to the user if `from_question`, else from the start;
// "start+2s"; or a line of the time line as it is shown, with or without a time after it: "runs cp
// -drf", "runs cp -drf+20ms", "prints status 3".
moment parse_moment(std::string_view text, bool from_question);

struct key_press {
    key which;
    moment when;
    unit_time hold;
};

// How long after the end marker appears the application removes it; nothing for "never".
std::optional<unit_time> parse_acknowledgement(std::string_view text);

// "ok@2s", "power@question+1s", "right@start+500ms for 3s"; times are after the question.
key_press parse_press(std::string_view text);

} // namespace simulator
