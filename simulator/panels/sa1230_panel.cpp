#include "simulator/panels/sa1230_panel.h"

#include <cstdio>
#include <map>

namespace simulator {

namespace {

constexpr uint8_t controller_setting = 0xFE;
constexpr uint8_t enter_sleep_mode = 0x10;
constexpr uint8_t exit_sleep_mode = 0x11;
constexpr uint8_t set_display_off = 0x28;
constexpr uint8_t set_display_on = 0x29;
constexpr uint8_t set_column_address = 0x2A;
constexpr uint8_t set_page_address = 0x2B;
constexpr uint8_t write_memory_start = 0x2C;
constexpr uint8_t set_tear_on = 0x35;
constexpr uint8_t set_pixel_format = 0x3A;
constexpr uint8_t set_display_brightness = 0x51;

constexpr uint8_t format_16_bits = 0x05;
constexpr uint8_t format_after_reset = 0x06;

// How many data bytes each command takes; pixels are not counted.
const std::map<int, size_t> parameter_counts = {
    {controller_setting, 1}, {enter_sleep_mode, 0},       {exit_sleep_mode, 0},
    {set_display_off, 0},    {set_display_on, 0},         {set_column_address, 4},
    {set_page_address, 4},   {write_memory_start, 0},     {set_tear_on, 1},
    {set_pixel_format, 1},   {set_display_brightness, 1},
};

constexpr size_t longest_told = 8;

std::string log_line(const char *what, std::span<const uint8_t> bytes) {
    std::string line = what;
    if (bytes.size() > longest_told) {
        return line + " " + std::to_string(bytes.size());
    }
    for (const uint8_t byte : bytes) {
        char text[4];
        snprintf(text, sizeof(text), " %02X", byte);
        line += text;
    }
    return line;
}

} // namespace

void sa1230_panel::power(bool on_now) {
    if (!on_now) {
        forget();
        memory.fill(0);
        was_reset = false;
    }
    powered = on_now;
}

void sa1230_panel::reset(bool high) {
    in_reset = !high;
    if (in_reset && powered) {
        forget();
        was_reset = true;
    }
}

void sa1230_panel::level(int data) {
    data_level = data != 0;
}

void sa1230_panel::led(std::string_view name_and_value) {
    const bool lit = !name_and_value.ends_with(" 0");
    if (name_and_value.starts_with("Oled_Power ")) {
        power(lit);
    } else if (name_and_value.starts_with("Oled_Rst ")) {
        reset(lit);
    }
}

void sa1230_panel::forget() {
    awake = on = full = false;
    brightness = 0;
    pixel_format = format_after_reset;
    window_columns = {0, columns - 1};
    window_rows = {0, rows - 1};
    command = -1;
    parameters.clear();
}

std::string sa1230_panel::transfer(std::span<const uint8_t> bytes) {
    const bool pixels = data_level && command == write_memory_start;
    std::string line = !data_level ? log_line("command", bytes)
                       : pixels    ? "pixels " + std::to_string(bytes.size())
                                   : log_line("data", bytes);
    if (!powered || in_reset || !was_reset) {
        ++counted.unheard;
        return line;
    }
    for (const uint8_t byte : bytes) {
        if (data_level) {
            take_data(byte);
        } else {
            take_command(byte);
        }
    }
    return line;
}

void sa1230_panel::end_command() {
    const auto known = parameter_counts.find(command);
    if (command == write_memory_start && parameters.size() == 1) {
        ++counted.half_pixels;
    } else if (known != parameter_counts.end() && parameters.size() < known->second) {
        ++counted.missing_data;
    }
    parameters.clear();
}

void sa1230_panel::take_command(uint8_t code) {
    end_command();
    command = code;
    if (!parameter_counts.contains(code)) {
        ++counted.unknown_commands;
        command = -1;
    } else if (parameter_counts.at(code) == 0) {
        execute();
    }
}

void sa1230_panel::take_data(uint8_t byte) {
    if (command == write_memory_start) {
        take_pixel_byte(byte);
        return;
    }
    if (command < 0 || parameters.size() == parameter_counts.at(command)) {
        ++counted.stray_data;
        return;
    }
    parameters.push_back(byte);
    if (parameters.size() == parameter_counts.at(command)) {
        execute();
    }
}

void sa1230_panel::execute() {
    switch (command) {
    case enter_sleep_mode:
    case exit_sleep_mode:
        awake = command == exit_sleep_mode;
        break;
    case set_display_off:
    case set_display_on:
        on = command == set_display_on;
        break;
    case set_column_address:
        set_range(window_columns, columns);
        break;
    case set_page_address:
        set_range(window_rows, rows);
        break;
    case set_pixel_format:
        pixel_format = parameters[0];
        break;
    case set_display_brightness:
        brightness = parameters[0];
        break;
    case write_memory_start:
        column = window_columns.start;
        row = window_rows.start;
        full = false;
        counted.other_formats += pixel_format != format_16_bits;
        break;
    default:
        break;
    }
}

void sa1230_panel::set_range(window_range &which, int limit) {
    const window_range wanted = {parameters[0] << 8 | parameters[1],
                                 parameters[2] << 8 | parameters[3]};
    if (!wanted.fits(limit)) {
        ++counted.bad_windows;
        return;
    }
    which = wanted;
}

// Pixels arrive high byte first and fill the window row by row; excess pixels are dropped.
void sa1230_panel::take_pixel_byte(uint8_t byte) {
    parameters.push_back(byte);
    if (parameters.size() < 2) {
        return;
    }
    const auto pixel = static_cast<uint16_t>(parameters[0] << 8 | parameters[1]);
    parameters.clear();
    if (full) {
        ++counted.excess_pixels;
        return;
    }
    if (pixel_format == format_16_bits) {
        memory[static_cast<size_t>(row * columns + column)] = pixel;
    }
    if (column < window_columns.end) {
        ++column;
        return;
    }
    column = window_columns.start;
    full = row == window_rows.end;
    filled_windows += full;
    ++row;
}

bool sa1230_panel::shows() const {
    return powered && was_reset && !in_reset && awake && on && brightness > 0;
}

// The panel is mounted with its first row at the user's right edge.
picture sa1230_panel::seen() const {
    picture result = {rows, columns, std::vector<uint8_t>(size_t{rows} * columns * 3)};
    if (!shows()) {
        return result;
    }
    uint8_t *to = result.rgb.data();
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; ++x) {
            const int pixel = memory[static_cast<size_t>((rows - 1 - x) * columns + y)];
            const int red = pixel >> 11, green = pixel >> 5 & 0x3F, blue = pixel & 0x1F;
            for (const int part :
                 {red << 3 | red >> 2, green << 2 | green >> 4, blue << 3 | blue >> 2}) {
                *to++ = static_cast<uint8_t>(part * brightness / 255);
            }
        }
    }
    return result;
}

} // namespace simulator
