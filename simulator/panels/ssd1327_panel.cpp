#include "simulator/panels/ssd1327_panel.h"

#include <cmath>
#include <cstdio>
#include <map>

namespace simulator {

namespace {

enum command_code : uint8_t {
    set_column_address = 0x15,
    set_row_address = 0x75,
    set_contrast = 0x81,
    set_re_map = 0xA0,
    set_start_line = 0xA1,
    set_display_offset = 0xA2,
    normal_display = 0xA4,
    entire_display_on = 0xA5,
    entire_display_off = 0xA6,
    inverse_display = 0xA7,
    set_multiplex_ratio = 0xA8,
    function_selection_a = 0xAB,
    display_off = 0xAE,
    display_on = 0xAF,
    set_phase_length = 0xB1,
    set_clock = 0xB3,
    set_second_pre_charge = 0xB6,
    set_pre_charge_voltage = 0xBC,
    set_vcomh = 0xBE,
    function_selection_b = 0xD5,
    set_command_lock = 0xFD,
};

// How many parameters each command takes; they are sent at the command level, too.
const std::map<uint8_t, size_t> parameter_counts = {
    {set_column_address, 2},
    {set_row_address, 2},
    {set_contrast, 1},
    {set_re_map, 1},
    {set_start_line, 1},
    {set_display_offset, 1},
    {normal_display, 0},
    {entire_display_on, 0},
    {entire_display_off, 0},
    {inverse_display, 0},
    {set_multiplex_ratio, 1},
    {function_selection_a, 1},
    {display_off, 0},
    {display_on, 0},
    {set_phase_length, 1},
    {set_clock, 1},
    {set_second_pre_charge, 1},
    {set_pre_charge_voltage, 1},
    {set_vcomh, 1},
    {function_selection_b, 1},
    {set_command_lock, 1},
};

// Bits of the re-map setting (data sheet, command A0).
constexpr int columns_remapped = 0x01;
constexpr int nibbles_remapped = 0x02;
constexpr int vertical_increment = 0x04;
constexpr int com_remapped = 0x10;
constexpr int com_split = 0x40;

constexpr int locked_parameter = 0x16;

} // namespace

ssd1327_panel::ssd1327_panel() {
    settings[set_contrast] = 0x7F;
    settings[set_multiplex_ratio] = rows - 1;
    settings[set_re_map] = com_split;
    uint32_t noise = 1;
    for (uint8_t &pixel : memory) {
        noise = noise * 1664525 + 1013904223;
        pixel = static_cast<uint8_t>(noise >> 28);
    }
}

void ssd1327_panel::level(int data) {
    data_level = data != 0;
}

std::string ssd1327_panel::transfer(std::span<const uint8_t> bytes) {
    std::string line = data_level ? "pixels " + std::to_string(bytes.size() * 2) : "command";
    for (const uint8_t byte : bytes) {
        if (data_level) {
            take_pixels(byte);
            continue;
        }
        char text[4];
        snprintf(text, sizeof(text), " %02X", byte);
        line += text;
        take_command(byte);
    }
    return line;
}

void ssd1327_panel::take_command(uint8_t byte) {
    command.push_back(byte);
    const auto known = parameter_counts.find(command[0]);
    if (known == parameter_counts.end()) {
        ++counted.unknown_commands;
        command.clear();
    } else if (command.size() > known->second) {
        execute();
        command.clear();
    }
}

void ssd1327_panel::execute() {
    const uint8_t code = command[0];
    if (locked && code != set_command_lock) {
        ++counted.locked_commands;
        return;
    }
    switch (code) {
    case set_column_address:
        set_range(window_columns, column, columns / 2);
        break;
    case set_row_address:
        set_range(window_rows, row, rows);
        break;
    case normal_display:
    case entire_display_on:
    case entire_display_off:
    case inverse_display:
        mode = code;
        break;
    case display_off:
    case display_on:
        on = code == display_on;
        counted.bad_settings += on && (setting(set_multiplex_ratio) != rows - 1 ||
                                       (setting(set_re_map) & com_split) == 0);
        break;
    case set_command_lock:
        locked = command[1] == locked_parameter;
        break;
    default:
        settings[code] = command[1];
    }
}

void ssd1327_panel::set_range(window_range &which, int &pointer, int limit) {
    const window_range wanted = {command[1], command[2]};
    if (!wanted.fits(limit)) {
        ++counted.bad_windows;
        return;
    }
    which = wanted;
    pointer = wanted.start;
}

// The low nibble of a byte goes to the even one of its two segment lines, unless nibbles are
// remapped.
void ssd1327_panel::take_pixels(uint8_t byte) {
    counted.missing_parameters += !command.empty();
    command.clear();
    const int map = setting(set_re_map);
    const int pair = (map & columns_remapped) != 0 ? columns / 2 - 1 - column : column;
    uint8_t *const to = &memory[static_cast<size_t>(row * columns + pair * 2)];
    const auto low = static_cast<uint8_t>(byte & 0x0F), high = static_cast<uint8_t>(byte >> 4);
    to[0] = (map & nibbles_remapped) != 0 ? high : low;
    to[1] = (map & nibbles_remapped) != 0 ? low : high;
    advance();
}

// The window is filled row by row or column by column; after its end writing continues at its
// start.
void ssd1327_panel::advance() {
    const auto step = [](int &pointer, const window_range &limits) {
        pointer = pointer == limits.end ? limits.start : pointer + 1;
        return pointer == limits.start;
    };
    const bool by_columns = (setting(set_re_map) & vertical_increment) != 0;
    const bool line_done = by_columns ? step(row, window_rows) : step(column, window_columns);
    if (line_done) {
        filled_windows += by_columns ? step(column, window_columns) : step(row, window_rows);
    }
}

bool ssd1327_panel::shows() const {
    return on && mode != entire_display_off && contrast() > 0;
}

ssd1327_panel::levels ssd1327_panel::seen_levels() const {
    levels result{};
    if (!shows()) {
        return result;
    }
    const bool turned = (setting(set_re_map) & com_remapped) != 0;
    const int shift = setting(set_start_line) + setting(set_display_offset);
    for (int y = 0; y < rows; ++y) {
        const int com = rows - 1 - y;
        const int line = ((turned ? rows - 1 - com : com) + shift) % rows;
        for (int x = 0; x < columns; ++x) {
            const uint8_t stored = memory[static_cast<size_t>(line * columns + columns - 1 - x)];
            result[static_cast<size_t>(y * columns + x)] = mode == entire_display_on ? 15
                                                           : mode == inverse_display
                                                               ? static_cast<uint8_t>(15 - stored)
                                                               : stored;
        }
    }
    return result;
}

picture ssd1327_panel::seen() const {
    constexpr double screen_gamma = 2.2;
    picture result = {columns, rows, {}};
    for (const uint8_t seen_level : seen_levels()) {
        const double light = seen_level / 15.0 * contrast() / 255.0;
        const auto value =
            static_cast<uint8_t>(std::lround(255 * std::pow(light, 1 / screen_gamma)));
        result.rgb.insert(result.rgb.end(), 3, value);
    }
    return result;
}

} // namespace simulator
