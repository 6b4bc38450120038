#pragma once

#include "simulator/panels/picture.h"
#include "simulator/panels/window_range.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace simulator {

// A model of the grey OLED: it takes the data/command line and bytes and returns what the user
// would see. It executes the commands of the SSD1327 (data sheet of Solomon Systech, command table)
// that a picture needs and counts whatever a real panel would not have understood.
//
// After power-up the display is off and its memory content is random. The glass is mounted upside
// down, with the odd COM lines on one side and the even ones on the other, so a picture is upright
// if the driver has columns, nibbles and COM lines remapped and COM split.
class ssd1327_panel {
public:
    static constexpr int columns = 128; // pixels; an address of the controller holds two
    static constexpr int rows = 128;
    using levels = std::array<uint8_t, columns * rows>; // 0 to 15, row by row from the top

    // Input that makes no sense; all zero as long as the driver is correct.
    struct fault_counts {
        int unknown_commands = 0;   // bytes at the command level that start no command
        int missing_parameters = 0; // data in the middle of a command
        int locked_commands = 0;    // commands while the controller is locked
        int bad_windows = 0;        // whose end lies before the start or outside the panel
        int bad_settings = 0;       // a multiplex ratio or COM wiring that does not match the glass

        bool operator==(const fault_counts &) const = default;
    };

    ssd1327_panel();

    // The data/command line: 0 command, anything else data.
    void level(int data);

    // Takes one transfer. Returns a line for the log: "command 15 00 3F", "pixels 128".
    std::string transfer(std::span<const uint8_t> bytes);

    // Whether the user sees anything: the display is on, not blanked, and its contrast not 0.
    bool shows() const;
    int contrast() const { return setting(0x81); }

    // The grey levels that the user sees; all 0 if the panel shows nothing.
    levels seen_levels() const;

    // The same as a picture: light proportional to level and contrast, gamma-coded for a screen.
    picture seen() const;

    // How often a window was filled to its last pixel.
    int pictures() const { return filled_windows; }

    const fault_counts &faults() const { return counted; }

private:
    void take_command(uint8_t byte);
    void take_pixels(uint8_t byte);
    void execute();
    void set_range(window_range &which, int &pointer, int limit);
    void advance();
    int setting(uint8_t code) const { return settings[code]; }

    fault_counts counted;
    bool data_level = false, locked = false, on = false;
    int mode = 0xA4;                     // one of A4 to A7
    std::array<uint8_t, 256> settings{}; // the last parameter of each command that has one
    window_range window_columns = {0, columns / 2 - 1}, window_rows = {0, rows - 1};
    int column = 0, row = 0;      // where the next byte goes
    std::vector<uint8_t> command; // the bytes of an incomplete command
    int filled_windows = 0;
    levels memory{}; // by row, then by segment line
};

} // namespace simulator
