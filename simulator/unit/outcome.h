#pragma once

#include "simulator/panels/sa1230_panel.h"
#include "simulator/panels/ssd1327_panel.h"
#include "simulator/unit/event.h"

#include <filesystem>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

// What a run left behind. The tree is removed with the last copy of the outcome, unless the
// environment variable RENEWER_KEEP_UNIT is set.
struct outcome {
    std::vector<event> events;
    std::map<size_t, unit_time> durations; // of the shell's commands, by index of the event
    int exit_status = -1;   // -1 if the program was ended by a signal or by the real-time limit
    int ended_by = 0;       // number of the signal, 0 for none
    bool timed_out = false; // ended by the desk (see `unit::patience` and `unit::stop_when`)
    bool power_cut = false; // ended by a power cut
    long peak_memory_kib = 0;
    // What the screen showed, in order; each picture was shown until the next one.
    std::vector<picture> pictures;
    // Final states: the LCD behind "/dev/spidev1.0", the OLED behind "/dev/spidev0.0".
    sa1230_panel panel;
    ssd1327_panel oled;
    std::shared_ptr<const std::filesystem::path> tree;

    // The lines of the events of these kinds (all kinds if none is named), each with a newline.
    std::string transcript(std::initializer_list<event_kind> kinds = {}) const;

    // What was printed on standard output, unchanged.
    std::string output() const;
    std::string errors() const;

    bool has(std::string_view line) const; // whether some event's line contains `line`
    int count(std::string_view line) const;
    // The time of the `occurrence`-th event whose line contains `line`; nothing if there is none.
    std::optional<unit_time> when(std::string_view line, int occurrence = 1) const;

    // The content of a file, by its path on the unit; nothing if it does not exist.
    std::optional<std::string> file(std::string_view path) const;
    bool exists(std::string_view path) const; // links are not followed
    // Path, kind and size of everything below a path of the unit, sorted, one entry per line.
    std::string listing(std::string_view path) const;
};

} // namespace simulator
