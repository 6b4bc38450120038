#pragma once

#include "simulator/panels/sa1230_panel.h"
#include "simulator/panels/ssd1327_panel.h"

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

// Answers a display driver's requests to an SPI link in the test's own process, with the colour LCD
// or the grey OLED at its end. Link with renewer::in_process.
struct spi_boundary {
    // All requests are in `asked().transcript`, one per line: "set mode 0", "data level", "command
    // 2A", "pixels 4096".
    std::string pixels; // the bytes sent since the last memory write command
    int transfers = 0;
    simulator::sa1230_panel panel;
    simulator::ssd1327_panel oled;
    bool leads_to_oled = false;

    uint32_t wanted_speed = 50000000;  // what the display's driver should set
    uint32_t highest_speed = 50000000; // what the link's driver accepts
    std::set<int> failing;             // numbers of transfers, from 1, that fail with EIO

    void take_lines_of_panel(); // reads the LED files that switch them
    void forget();              // clears the records; the panel keeps its state
};

spi_boundary &spi();

// Makes the LCD's node and the LED files of its power and reset lines.
void put_lcd(const std::filesystem::path &node);
