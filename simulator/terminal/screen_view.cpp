#include "simulator/terminal/screen_view.h"

#include "simulator/terminal/time_line.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace simulator {

namespace fs = std::filesystem;

namespace {

constexpr int frame_columns = 2; // the frame around the picture
constexpr int frame_rows = 3;    // two rules and the line of the held key
constexpr int least_columns = 18;

fs::path file_of(size_t number) {
    std::array<char, 32> name;
    snprintf(name.data(), name.size(), "picture-%02zu.png", number);
    return name.data();
}

// How much of source pixel `from` falls into pixel `to` when a row of `source_length` pixels is
// reduced to `length`, in units of 1/`length` source pixel.
int overlap(int from, int to, int source_length, int length) {
    const int begin = std::max(from * length, to * source_length);
    const int end = std::min((from + 1) * length, (to + 1) * source_length);
    return std::max(end - begin, 0);
}

using colour = std::array<int, 3>;

// The mean colour of the source pixels that become one pixel.
colour mean(const picture &whole, int x, int y, int width, int height) {
    std::array<int64_t, 3> sum{};
    int64_t area = 0;
    for (int row = y * whole.height / height; row * height < (y + 1) * whole.height; ++row) {
        for (int column = x * whole.width / width; column * width < (x + 1) * whole.width;
             ++column) {
            const int64_t part = int64_t{overlap(row, y, whole.height, height)} *
                                 overlap(column, x, whole.width, width);
            const uint8_t *pixel = &whole.rgb[static_cast<size_t>(row * whole.width + column) * 3];
            area += part;
            for (size_t i = 0; i < 3; ++i) {
                sum[i] += part * pixel[i];
            }
        }
    }
    const auto of = [&](size_t i) { return static_cast<int>(sum[i] / area); };
    return {of(0), of(1), of(2)};
}

// "38" for the upper half of the block, "48" for the lower one, and 24 bits of colour (ECMA-48 and
// ISO 8613-6).
std::string in_colour(const char *half, const colour &wanted) {
    std::array<char, 40> text;
    snprintf(text.data(), text.size(), "\033[%s;2;%d;%d;%dm", half, wanted[0], wanted[1],
             wanted[2]);
    return text.data();
}

std::string line_of_blocks(const picture &whole, int line, int width, int height) {
    std::string text;
    colour upper_before = {-1, -1, -1}, lower_before = upper_before;
    for (int x = 0; x < width; ++x) {
        const colour upper = mean(whole, x, 2 * line, width, height);
        const colour lower = mean(whole, x, 2 * line + 1, width, height);
        text += upper != upper_before ? in_colour("38", upper) : "";
        text += lower != lower_before ? in_colour("48", lower) : "";
        text += "\u2580"; // the upper half of a block
        upper_before = upper;
        lower_before = lower;
    }
    return text + "\033[0m";
}

// Without colours: denser characters for lighter pixels.
std::string line_of_characters(const picture &whole, int line, int width, int height) {
    constexpr std::string_view shades = " .:-=+*#%@";
    std::string text;
    for (int x = 0; x < width; ++x) {
        const colour upper = mean(whole, x, 2 * line, width, height);
        const colour lower = mean(whole, x, 2 * line + 1, width, height);
        const int light =
            (upper[0] + lower[0]) * 3 + (upper[1] + lower[1]) * 6 + upper[2] + lower[2];
        text += shades[static_cast<size_t>(light) * (shades.size() - 1) / (255 * 20)];
    }
    return text;
}

} // namespace

screen_view::screen_view(const fs::path &picture_directory, const picture &dark)
    : directory(picture_directory), now_seen(dark) {
    if (!directory.empty()) {
        fs::create_directories(directory);
        for (size_t number = 0; fs::remove(directory / file_of(number)); ++number) {
        }
    }
}

bool screen_view::take(const event &happened) {
    return key.take(happened);
}

bool screen_view::take(const picture &seen) {
    now_seen = seen;
    if (std::ranges::find(known, seen) == known.end()) {
        untold = file_of(known.size());
        if (!directory.empty()) {
            write_png(directory / untold, seen);
        }
        known.push_back(seen);
    }
    return true;
}

std::string screen_view::line_for(const event &happened) {
    if (untold.empty()) {
        return {};
    }
    const std::string line = line_begin(happened.at, "screen") + untold + "\n";
    untold.clear();
    return line;
}

std::string screen_view::draw(const drawing_room &room) const {
    // A cell is twice as high as wide, so it holds two square pixels, one above the other. One row
    // of the terminal is left for the time line and one for the cursor.
    const int widest = (room.rows - frame_rows - 2) * 2 * now_seen.width / now_seen.height;
    const int width = std::max(std::min({room.columns - frame_columns, widest, now_seen.width}),
                               std::min(least_columns, now_seen.width));
    const int lines = std::max(width * now_seen.height / now_seen.width / 2, 1);
    const auto line_of = room.colours ? line_of_blocks : line_of_characters;
    const std::string rule = "+" + std::string(static_cast<size_t>(width), '-') + "+\n";
    std::string drawing = rule;
    for (int line = 0; line < lines; ++line) {
        drawing += "|" + line_of(now_seen, line, width, 2 * lines) + "|\n";
    }
    return drawing + rule + "  key: " + (key.name().empty() ? "none" : key.name()) + "\n";
}

} // namespace simulator
