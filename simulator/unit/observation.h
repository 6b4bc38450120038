#pragma once

#include "simulator/unit/description.h"
#include "simulator/unit/outcome.h"

#include <optional>

namespace simulator {

// Watches a run: builds its time line, feeds the panel models, and performs planned actions when
// they are due.
class observation {
public:
    // Both arguments must outlive this object. The unit's time begins now.
    observation(const unit_plan &plan, const running_unit &unit);

    // Adds an event to the time line.
    void note(event_kind kind, std::string text, bool background = false);

    // Adds what was printed: each line is an event, and so is an unfinished last line.
    void note_printed(event_kind kind, std::string_view text);

    // Takes a record of the boundary (see protocol.h).
    void note_record(std::string_view record);

    // Performs the actions that are due or that a hand has requested, and looks for the end marker.
    // The marker counts when its file exists, not when the program runs the command that makes it.
    void act();

    bool power_cut() const { return acting.power_cut; }

    // Milliseconds of the desk's clock until the next action may be due.
    int desk_wait() const;

    outcome result;

private:
    // A planned action that waits for its event; `due` is set when the event has been seen.
    struct scheduled {
        const planned_action *what;
        int occurrences_seen = 0;
        std::optional<unit_time> due;
        bool done = false;
    };

    unit_time now() const;
    void perform(const planned_action &what, unit_time key_time);
    void set_due(const event &happened);
    void take_command_end(std::string_view command);
    void take_level(std::string_view node, std::string_view number);
    void take_transfer(std::string_view node, std::string_view bytes);
    template <typename panel_model>
    void take_transfer_of(panel_model &panel, std::string_view bytes);
    void take_picture(const picture &seen);

    const unit_plan &plan;
    std::chrono::steady_clock::time_point start;
    running_unit acting;
    std::vector<scheduled> schedule;
    bool end_marker_seen = false;
};

} // namespace simulator
