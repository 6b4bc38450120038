#pragma once

#include "simulator/unit/description.h"
#include "simulator/unit/outcome.h"

#include <optional>

namespace simulator {

// What is seen of a run: the time line as it grows, the panel, and the happenings of the
// description at their moments.
class observation {
public:
    // Both stand for as long as the observation. The unit's time begins now.
    observation(const unit_plan &plan, const running_unit &unit);

    // Adds an event to the time line.
    void note(event_kind kind, std::string text, bool background = false);

    // Adds what was printed: each line is an event, and so is an unfinished line.
    void note_printed(event_kind kind, std::string_view text);

    // Takes a record of the boundary's (see boundary.h).
    void note_record(std::string_view record);

    // Makes happen what is due and what a hand asks for, and looks for the end marker: the rest of
    // the unit acts on it when it is there, not when it is asked for.
    void act();

    bool power_cut() const { return acting.power_cut; }

    // Milliseconds of the desk until the next happening may be due.
    int desk_wait() const;

    outcome result;

private:
    // A happening whose moment is awaited, or known once `due` is set.
    struct scheduled {
        const happening *what;
        int occurrences_seen = 0;
        std::optional<unit_time> due;
        bool done = false;
    };

    unit_time now() const;
    void make_happen(const happening &what, unit_time key_time);
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
