#pragma once

#include "simulator/terminal/panel_view.h"

#include <vector>

namespace simulator {

struct output_style {
    bool panel = false; // drawn below the time line; needs a terminal that can move its cursor
    bool colours = false;
    bool verbose = false; // repeated lines are not folded
};

// The style that suits standard output and the environment (NO_COLOR, TERM).
output_style detect_output_style(bool plain, bool verbose);

// Shows a run: the time line and, on a terminal, the panel below it.
class front_panel {
public:
    // `shown_panel` must outlive this object.
    front_panel(panel_view &shown_panel, const output_style &wanted)
        : panel(shown_panel), how(wanted) {}

    void show(const event &happened);
    void show(const picture &seen);

    // Leaves the panel as it is; further output follows below it.
    void finish();

    // False once writing to standard output has failed.
    bool output_works() const;

private:
    std::string line_for(const event &happened);
    std::string fold_repeats(const event &happened);
    std::string end_fold();
    std::string erase_panel() const;
    void print(std::string lines);

    panel_view &panel;
    output_style how;
    event last_event{};
    std::string last_line;         // without its time
    int repeats = 0;               // of the last line
    std::vector<int> drawn_widths; // of the panel's lines above the cursor
};

} // namespace simulator
