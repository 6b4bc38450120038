#pragma once

#include <cstddef>
#include <cstdint>

// Battery and power sources of the unit, measured through its analogue-to-digital converter
// (Linux industrial I/O, text files in sysfs) and the mode file of its USB controller.
namespace renewer {

struct bat_info {
    int32_t ext_power;    // 1 when there is external power, else 0
    float bat1_vol;       // volts of the whole battery (two cells)
    int32_t bat1_percent; // charge, 0 to 100
};
static_assert(sizeof(bat_info) == 12);
static_assert(offsetof(bat_info, bat1_vol) == 4 && offsetof(bat_info, bat1_percent) == 8);

// Status values of the measurement; 0 is success.
constexpr int adc_unknown_channel = 45; // also: unknown measurement model
constexpr int adc_open_failed = 46;
constexpr int adc_read_failed = 47;

// Measures the power sources and the battery into `info`, which the caller has zeroed.
// `machine_type` 0 measures the battery, the external DC input (present above 8.0 V) and the
// type-C supply (present above 4.5 V unless the USB controller is the host and supplies it
// itself); 1 measures the battery and the type-C supply.
//
// Each channel is the mean of ten readings without the highest and the lowest. A reading that
// fails counts as the one before it (0.0 V at first), so a unit without these files has an empty
// battery and no external power. Each reading, each mean and the decisions are printed on standard
// output.
//
// Returns the status of the last reading made; 45 for another machine_type, with nothing measured
// and `info` as it was.
int get_bat_percent(int machine_type, bat_info *info);

// Reads one ADC channel (1 to 9, in_voltage<channel>_raw of IIO device 0) and converts it to
// volts: by the channel's own scale (1 battery, 2 DC input, 3 type-C), or by the plain scale of
// 0 to 3.3 V when `raw` is not 0 or the channel has none. The file is opened anew each time.
//
// Returns 0; 45 for a channel outside 1 to 9, 46 when the file cannot be opened, 47 when it cannot
// be read. `volts` is written on success only.
int adc_get_common(int channel, float *volts, int raw);

// Asks whether the USB controller is in host mode, and prints what its mode file says.
//
// Returns 0 when it is; -1 when the mode file cannot be opened, reported on standard error with the
// prefix "fopen"; another value when it is in another mode.
int usb_state_judge();

// Converts the volts of one cell to its charge, 0 to 100, in `percent`: linear between the points
// of the discharge table, rounded to the nearest whole percent, halves up. Always returns 0.
int calc_bat_percent_pica(int *percent, float cell_volts);

} // namespace renewer
