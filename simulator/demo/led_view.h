#pragma once

#include "simulator/demo/front_panel.h"

#include <array>
#include <map>
#include <string>

namespace simulator {

// The front panel of a unit with LEDs. Where nothing can be drawn a line tells each new pattern,
// but not every turn of two that alternate.
class led_view : public panel_view {
public:
    using panel_view::take;
    bool take(const event &happened) override;
    std::string told(unit_time now) override;
    std::string drawn(int columns, int rows) const override;

private:
    std::string pattern(bool coloured) const;

    std::map<std::string, bool> lit;
    held_key key;
    unit_time changed{};                 // when an LED was last switched
    std::array<std::string, 2> patterns; // that were told last
};

} // namespace simulator
