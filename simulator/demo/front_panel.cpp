#include "simulator/demo/front_panel.h"

#include "simulator/demo/time_line.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace simulator {

namespace {

winsize terminal_size() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        size.ws_col = 80;
        size.ws_row = 24;
    }
    return size;
}

} // namespace

bool held_key::take(const event &happened) {
    const std::string before = held;
    if (happened.kind == event_kind::act && happened.text.starts_with("press ")) {
        held = happened.text.substr(6);
    } else if (happened.kind == event_kind::act && happened.text.starts_with("release ")) {
        held = "none";
    }
    return held != before;
}

void front_panel::show(const event &happened) {
    last_event = happened.at;
    std::string lines = newly_told(happened.at);
    if (const std::string line = readable_line(happened); !line.empty()) {
        lines += line + "\n";
    }
    if (panel.take(happened) || !lines.empty()) {
        print(lines, on_terminal);
    }
}

void front_panel::show(const picture &seen) {
    panel.take(seen);
    print(newly_told(last_event), on_terminal);
}

void front_panel::finish() {
    print(newly_told(last_event), false);
}

// All at once, so that a terminal does not show the panel half drawn.
void front_panel::print(std::string lines, bool with_panel) {
    if (drawn_lines > 0) { // to the panel's first line, and clear from there (ECMA-48)
        lines.insert(0, "\033[" + std::to_string(drawn_lines) + "F\033[J");
    }
    drawn_lines = 0;
    if (with_panel) {
        const winsize size = terminal_size();
        const std::string drawing = panel.drawn(size.ws_col, size.ws_row);
        drawn_lines = std::ranges::count(drawing, '\n');
        lines += drawing;
    }
    fputs(lines.c_str(), stdout);
    fflush(stdout);
}

} // namespace simulator
