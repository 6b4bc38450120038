#pragma once

#include "simulator/panels/sa1230_panel.h"
#include "simulator/panels/ssd1327_panel.h"

#include <cstdint>
#include <functional>
#include <set>
#include <string>

// What a display driver asks of the system, in the test's own process: the requests to an SPI link
// with the colour LCD or the grey OLED at its end, the shell commands that switch the LCD's lines,
// and the sleeps, which end at once. Link with renewer::in_process.
struct spi_boundary {
    // Everything asked for, one a line: "set mode 0", "data level", "command 2A", "pixels 4096",
    // "shell echo ...", "wait 5000 us", "sleep 1 s", "select 120.000000 s".
    std::string transcript;
    std::string pixels; // the bytes sent since the last memory write command
    int transfers = 0;
    simulator::sa1230_panel panel;
    simulator::ssd1327_panel oled;
    bool leads_to_oled = false;

    uint32_t wanted_speed = 50000000;   // that of the display's driver
    uint32_t highest_speed = 50000000;  // what the link's driver accepts
    std::set<int> failing;              // transfers, from 1 on, that fail with EIO and are not sent
    std::function<void()> before_sleep; // called by each sleep of whole seconds

    void forget(); // what was asked for; the panel keeps its state
};

spi_boundary &spi();
