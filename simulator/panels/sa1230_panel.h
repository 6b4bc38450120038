#pragma once

#include "simulator/panels/picture.h"
#include "simulator/panels/window_range.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

// A model of the screen unit's colour LCD: it takes the controller's input lines and bytes and
// returns what the user would see. It executes the commands of the MIPI display command set that a
// picture needs and counts whatever a real panel would not have understood.
class sa1230_panel {
public:
    static constexpr int columns = 126;
    static constexpr int rows = 294;

    // Input that makes no sense; all zero as long as the driver is correct.
    struct fault_counts {
        int unheard = 0;          // transfers without power, in reset, or before any reset
        int unknown_commands = 0; // bytes at the command level
        int stray_data = 0;       // bytes at the data level that belong to no command
        int missing_data = 0;     // commands that ended before they had all their data
        int bad_windows = 0;      // whose end lies before the start or outside the panel
        int excess_pixels = 0;    // pixels after the window was full
        int half_pixels = 0;      // memory writes that ended in the middle of a pixel
        int other_formats = 0;    // memory writes while the pixel format is not 16 bits

        bool operator==(const fault_counts &) const = default;
    };

    // The input lines. `level`: 0 command, anything else data. `reset(false)` holds the panel in
    // reset.
    void power(bool on);
    void reset(bool high);
    void level(int data);
    // Power and reset as a unit switches them, through LED files: the name and the value written,
    // such as "Oled_Rst 255". Other LEDs are ignored.
    void led(std::string_view name_and_value);

    // Takes one transfer. Returns a line for the log: "command 2A", "data 00 7D", "pixels 4096".
    std::string transfer(std::span<const uint8_t> bytes);

    // Whether the user sees the panel's memory: it is powered, was reset, is awake, on and not
    // dark.
    bool shows() const;

    // What the user sees, upright: 294 x 126 pixels; black if the panel shows nothing.
    picture seen() const;

    // How often a window was filled to its last pixel.
    int pictures() const { return filled_windows; }

    const fault_counts &faults() const { return counted; }

private:
    void take_command(uint8_t code);
    void take_data(uint8_t byte);
    void take_pixel_byte(uint8_t byte);
    void end_command();
    void execute();
    void set_range(window_range &which, int limit);
    void forget();

    fault_counts counted;
    bool powered = false, in_reset = false, was_reset = false;
    bool data_level = false;
    bool awake = false, on = false;
    uint8_t brightness = 0, pixel_format = 0;
    window_range window_columns{}, window_rows{};
    int command = -1;                // the command that the next data bytes belong to, -1 for none
    std::vector<uint8_t> parameters; // its data bytes so far
    int column = 0, row = 0;         // where the next pixel goes
    bool full = false;               // the window has been filled
    int filled_windows = 0;
    std::array<uint16_t, columns * rows> memory{};
};

} // namespace simulator
