#pragma once

#include "simulator/terminal/panel_view.h"

#include <array>
#include <map>

namespace simulator {

// The front panel of a unit with LEDs. Where nothing can be drawn a line tells each new pattern,
// but not every turn of two that alternate.
class led_view : public panel_view {
public:
    using panel_view::take;
    bool take(const event &happened) override;
    std::string told(const event &happened) override;
    std::string drawn(const drawing_room &room) const override;

private:
    std::map<std::string, bool> lit;
    held_key key;
    bool by_background = false;          // which thread has switched an LED last
    std::array<std::string, 2> patterns; // that were told last
};

} // namespace simulator
