#pragma once

#include "simulator/terminal/panel_view.h"

#include <vector>

namespace simulator {

struct showing {
    bool panel = false; // drawn below the time line; a terminal that can move its cursor
    bool colours = false;
    bool verbose = false; // each line as often as it comes
};

// What can be shown on standard output, by what it is and by the environment (NO_COLOR, TERM).
showing showing_here(bool plain, bool verbose);

// A run as a person follows it: the time line and, on a terminal, the panel below it.
class front_panel {
public:
    // `shown_panel` stands for as long as this.
    front_panel(panel_view &shown_panel, const showing &wanted) : panel(shown_panel), how(wanted) {}

    void show(const event &happened);
    void show(const picture &seen);

    // Leaves the lines and the panel as they are: what is printed from now on follows them.
    void finish();

    // Whether somebody still reads the output.
    bool heard() const;

private:
    std::string told(const event &happened);
    std::string folded(const event &happened);
    std::string end_of_fold();
    std::string panel_taken_away() const;
    void print(std::string lines);

    panel_view &panel;
    showing how;
    event last_event{};
    std::string last_line;         // without its time
    int repeats = 0;               // of the last line
    std::vector<int> drawn_widths; // of the panel's lines above the cursor
};

} // namespace simulator
