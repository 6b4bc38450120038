#pragma once

#include "platform/owner.h"
#include "simulator/unit/failure.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace simulator {

// Observes LEDs and processes through the kernel, without interfering with either.
//
// The observing process must have precedence over the observed ones (sched(7), SCHED_FIFO on one
// processor). Then each value is read before the next one is written, and a command line before its
// process runs.
class witness {
public:
    // Takes a line for the time line: "led Light_Gps 1", "runs sync".
    using reporter = std::function<void(const std::string &)>;

    // Watches all LEDs of the LED class, and all programs started from now on. Throws if the kernel
    // refuses.
    explicit witness(reporter reports_to);

    int led_changes() const { return changes.get(); }
    int process_events() const { return events.get(); }

    // Report what has happened.
    void look_at_leds();
    void look_at_processes();

private:
    reporter report;
    renewer::owned_descriptor changes;
    renewer::owned_descriptor events;
    std::map<std::string, std::string> leds; // last value of each
};

} // namespace simulator
