#pragma once

#include <string>
#include <string_view>

namespace simulator {

// What a unit measures of its supplies: files of its converter and of its USB controller.
struct supply_file {
    std::string name; // as the time line tells it, "battery 6.4 V"
    std::string path;
    std::string content;
};

supply_file adc_count(int channel, std::string_view text); // "in_voltage<channel>_raw"
supply_file battery_at(double volts);                      // of the whole battery (two cells)
supply_file external_at(double volts);                     // DC input; from 0.339 V up it counts
supply_file type_c_at(double volts);
supply_file usb_mode_of(std::string_view text); // "host", "device"

} // namespace simulator
