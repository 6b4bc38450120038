#pragma once

#include "simulator/terminal/panel_view.h"

#include <array>
#include <map>

namespace simulator {

// The front panel of a unit with LEDs. Where nothing can be drawn, each new pattern gets a line,
// but two alternating patterns are not repeated.
class led_view : public panel_view {
public:
    using panel_view::take;
    bool take(const event &happened) override;
    std::string line_for(const event &happened) override;
    std::string draw(const drawing_room &room) const override;

private:
    std::map<std::string, bool> lit;
    held_key key;
    bool by_background = false;          // whether a background thread switched the last LED
    std::array<std::string, 2> patterns; // of the last two lines
};

} // namespace simulator
