#pragma once

#include "platform/owner.h"
#include "simulator/unit/failure.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace simulator {

// Sees what the kernel tells of LEDs and processes, without a hand in either.
//
// The process that looks must run before the ones it looks at (sched(7), SCHED_FIFO on one
// processor): then a value is read before the next one is written, and a command line while its
// process stands at its first instruction.
class witness {
public:
    // "led Light_Gps 1", "runs sync": what was seen, for the time line.
    using report = std::function<void(const std::string &)>;

    // Watches every LED of the LED class, and all programs started from now on. Throws when the
    // kernel refuses.
    explicit witness(report told);

    int led_changes() const { return changes.get(); }
    int process_events() const { return events.get(); }

    // Tell what has come in.
    void look_at_leds();
    void look_at_processes();

private:
    report tell;
    renewer::owned_descriptor changes;
    renewer::owned_descriptor events;
    std::map<std::string, std::string> leds; // the value of each, as last seen
};

} // namespace simulator
