#include "simulator/terminal/front_panel.h"

#include "simulator/terminal/time_line.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// The number of cells that a line takes: none for an escape sequence, one for a UTF-8 character.
int width_of(std::string_view line) {
    int width = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '\033') {
            i = std::min(line.find('m', i), line.size() - 1);
        } else if ((static_cast<unsigned char>(line[i]) & 0xC0) != 0x80) {
            ++width;
        }
    }
    return width;
}

bool is_set(const char *variable) {
    const char *value = getenv(variable);
    return value != nullptr && *value != '\0';
}

} // namespace

bool held_key::take(const event &happened) {
    const std::string before = held;
    if (happened.kind == event_kind::act && happened.text.starts_with("press ")) {
        held = happened.text.substr(strlen("press "));
    } else if (happened.kind == event_kind::act && happened.text.starts_with("release ")) {
        held.clear();
    }
    return held != before;
}

output_style detect_output_style(bool plain, bool verbose) {
    const char *terminal = getenv("TERM");
    const bool dumb = terminal == nullptr || strcmp(terminal, "dumb") == 0;
    return {!plain && !dumb && isatty(STDOUT_FILENO) != 0, !is_set("NO_COLOR"), verbose};
}

void front_panel::show(const event &happened) {
    last_event = happened;
    std::string lines = line_for(happened) + fold_repeats(happened);
    if (panel.take(happened) || !lines.empty()) {
        print(std::move(lines));
    }
}

void front_panel::show(const picture &seen) {
    panel.take(seen);
    print(line_for(last_event));
}

void front_panel::finish() {
    last_event.kind = event_kind::exit;
    print(line_for(last_event) + end_fold());
    drawn_widths.clear();
}

bool front_panel::output_works() const {
    return ferror(stdout) == 0;
}

// A line about the panel interrupts a series of repeats.
std::string front_panel::line_for(const event &happened) {
    const std::string line = how.panel ? std::string() : panel.line_for(happened);
    return line.empty() ? line : end_fold() + line;
}

// The event's line; nothing for a repeat of the last line, which is only counted.
std::string front_panel::fold_repeats(const event &happened) {
    const std::string line = readable_line(happened);
    if (line.empty()) {
        return {};
    }
    const std::string text = line.substr(line.find(" s  "));
    if (!how.verbose && text == last_line) {
        ++repeats;
        return {};
    }
    const std::string before = end_fold();
    last_line = text;
    return before + line + "\n";
}

std::string front_panel::end_fold() {
    const std::string line =
        repeats == 0 ? std::string()
                     : line_begin(last_event.at, "") + "(x" + std::to_string(repeats) + " more)\n";
    repeats = 0;
    last_line.clear();
    return line;
}

// Moves to the panel's first line and clears from there (ECMA-48). A terminal that has become
// narrower since has wrapped the lines.
std::string front_panel::erase_panel() const {
    const int columns = terminal_size().ws_col;
    int rows = 0;
    for (const int width : drawn_widths) {
        rows += std::max((width + columns - 1) / columns, 1);
    }
    return rows == 0 ? std::string() : "\033[" + std::to_string(rows) + "F\033[J";
}

// Prints in one go, so that the terminal never shows a panel half drawn.
void front_panel::print(std::string lines) {
    lines.insert(0, erase_panel());
    drawn_widths.clear();
    if (how.panel) {
        const winsize size = terminal_size();
        const std::string drawing = panel.draw({size.ws_col, size.ws_row, how.colours});
        for (size_t begin = 0; begin < drawing.size() && drawn_widths.size() + 1 < size.ws_row;) {
            const size_t end = drawing.find('\n', begin);
            const std::string line = drawing.substr(begin, end - begin);
            drawn_widths.push_back(width_of(line));
            lines += line + "\n";
            begin = end + 1;
        }
    }
    fputs(lines.c_str(), stdout);
    fflush(stdout);
}

} // namespace simulator
