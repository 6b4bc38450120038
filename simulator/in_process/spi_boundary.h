#pragma once

#include "simulator/panels/sa1230_panel.h"
#include "simulator/panels/ssd1327_panel.h"

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

// What a display driver asks of an SPI link in the test's own process, with the colour LCD or the
// grey OLED at its end. Link with renewer::in_process.
struct spi_boundary {
    // Everything asked for is in `asked().transcript`, one a line: "set mode 0", "data level",
    // "command 2A", "pixels 4096".
    std::string pixels; // the bytes sent since the last memory write command
    int transfers = 0;
    simulator::sa1230_panel panel;
    simulator::ssd1327_panel oled;
    bool leads_to_oled = false;

    uint32_t wanted_speed = 50000000;  // that of the display's driver
    uint32_t highest_speed = 50000000; // what the link's driver accepts
    std::set<int> failing;             // transfers, from 1 on, that fail with EIO and are not sent

    void take_lines_of_panel(); // from the LED files that switch them
    void forget();              // what was asked for; the panel keeps its state
};

spi_boundary &spi();

// Makes the node of the LCD and the LED files of its power and reset lines.
void put_lcd(const std::filesystem::path &node);
