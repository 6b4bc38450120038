#include "pictures.h"

#include "simulator/unit/unit.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace document_pictures {

using namespace simulator;

oled_screen run_oled_status() {
    std::ifstream battery(OLED_STATUS_BATTERY, std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(battery), {});
    const outcome end = unit()
                            .program(OLED_STATUS)
                            .file("/reserve/battery.bmp", content)
                            .run({"/dev/spidev0.0", "/reserve/battery.bmp", "22"});
    if (end.exit_status != 0 || end.oled.faults() != ssd1327_panel::fault_counts{}) {
        throw std::runtime_error("the status screen cannot be shown");
    }
    oled_screen screen = {end.oled.seen(), {}};
    const std::string command = "command ";
    for (const event &happened : end.events) {
        if (happened.kind == event_kind::spi && happened.text.starts_with(command)) {
            screen.commands.push_back(happened.text.substr(command.size()));
        }
    }
    return screen;
}

std::vector<picture> run_screen_update() {
    const outcome end = unit()
                            .model("16")
                            .with_prompt_pictures()
                            .install_script("#!/bin/sh\nsleep 4\n")
                            .press(key::ok, after("wait 120 s", 1s))
                            .acknowledge_end(1s)
                            .run({"1", "/media/sda1/update", "34"});
    if (end.exit_status != 1 || end.pictures.size() < 5) {
        throw std::runtime_error("the update does not show its pictures");
    }
    return end.pictures;
}

} // namespace document_pictures
