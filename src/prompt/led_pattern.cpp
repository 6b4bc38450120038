#include "prompt/led_pattern.h"

#include "prompt/led.h"

namespace renewer {

void show_leds(std::span<const led_state> pattern) {
    for (const led_state &led : pattern) {
        if (led.lit) {
            led_on_by_name(led.name);
        } else {
            led_off_by_name(led.name);
        }
    }
}

} // namespace renewer
