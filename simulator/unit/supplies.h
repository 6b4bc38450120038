#pragma once

#include <string>
#include <string_view>

namespace simulator {

// Files from which a unit reads the state of its supplies: converter inputs and USB controller.
struct supply_file {
    std::string name; // as the time line shows it: "battery 6.4 V"
    std::string path;
    std::string content;
};

supply_file adc_count(int channel, std::string_view text); // "in_voltage<channel>_raw"
supply_file battery_at(double volts);                      // of the whole battery (two cells)
supply_file external_at(double volts);                     // DC input; reads 0 below 0.339 V
supply_file type_c_at(double volts);
supply_file usb_mode_of(std::string_view text); // "host", "device"

} // namespace simulator
