#include "simulator/unit/supplies.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace simulator {

namespace {

supply_file counted(const char *name, double volts, int channel, double count) {
    std::array<char, 64> shown;
    snprintf(shown.data(), shown.size(), "%s %.10g V", name, volts);
    supply_file file = adc_count(channel, std::to_string(std::max(0L, std::lround(count))) + "\n");
    file.name = shown.data();
    return file;
}

} // namespace

supply_file adc_count(int channel, std::string_view text) {
    const std::string name = "in_voltage" + std::to_string(channel) + "_raw";
    return {name, "/sys/bus/iio/devices/iio:device0/" + name, std::string(text)};
}

// Convert voltages to raw counts of the converter, by the divider and offset of each input.

supply_file battery_at(double volts) {
    return counted("battery", volts, 1, volts * 1023.0 / (5.255 * 1.8));
}

supply_file external_at(double volts) {
    return counted("external", volts, 2, (volts * 1000.0 - 339.0) / 40.84);
}

supply_file type_c_at(double volts) {
    return counted("type-C", volts, 3, volts * 1023.0 / 18.0);
}

supply_file usb_mode_of(std::string_view text) {
    return {"USB " + std::string(text), "/sys/kernel/debug/ffd00000.dwc3/mode",
            std::string(text) + "\n"};
}

} // namespace simulator
