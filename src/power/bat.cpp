#include "power/bat.h"

#include "platform/debug.h"
#include "platform/owner.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace renewer {

namespace {

// Single precision is rounded at every step, never kept wider in a register.
static_assert(FLT_EVAL_METHOD == 0);

constexpr int battery_channel = 1;
constexpr int ext_channel = 2;
constexpr int type_c_channel = 3;
constexpr int last_channel = 9;

constexpr float ext_present_volts = 8.0f;
constexpr float type_c_present_volts = 4.5f;

// Hundredths of a volt of one cell at 0 %, 10 %, ..., 100 %.
constexpr std::array<int32_t, 11> bat_vol_tbl_pica = {285, 330, 340, 343, 350, 356,
                                                      366, 375, 384, 395, 410};
constexpr size_t full = bat_vol_tbl_pica.size() - 1;

float raw_scale(float count) {
    return static_cast<float>(count / 4095.0 * 3.3);
}

float battery_scale(float count) {
    const float volts = static_cast<float>(count * 5.255 * 1.8 / 1023.0);
    debug(5, "bat val=%f\n", static_cast<double>(volts));
    return volts;
}

float ext_scale(float count) {
    const float volts = static_cast<float>((count * 40.84 + 339.0) / 1000.0);
    debug(5, "extern val=%f\n", static_cast<double>(volts));
    return volts;
}

float type_c_scale(float count) {
    const float tenfold = count * 10.0f;
    const float volts = static_cast<float>(tenfold * 1.8 / 1023.0);
    debug(5, "typeC val=%f\n", static_cast<double>(volts));
    return volts;
}

float volts_of(int channel, float count, int raw) {
    if (raw != 0) {
        return raw_scale(count);
    }
    switch (channel) {
    case battery_channel:
        return battery_scale(count);
    case ext_channel:
        return ext_scale(count);
    case type_c_channel:
        return type_c_scale(count);
    default:
        return raw_scale(count);
    }
}

// strtoll, so that the count is the same whatever the width of long.
float count_of(const char *text) {
    const long long count = strtoll(text, nullptr, 10);
    return static_cast<float>(std::clamp<long long>(count, INT32_MIN, INT32_MAX));
}

struct channel_mean {
    float volts;
    int status; // of the last reading
};

// The trimmed mean starts with 0.0 as the highest and 20.0 as the lowest reading; if all are above
// 20 V, it subtracts 20.0 instead of the smallest.
channel_mean measure(int channel, const char *name, const char *sum_name) {
    float highest = 0.0f;
    float lowest = 20.0f;
    float sum = 0.0f;
    float sample = 0.0f;
    int status = 0;
    for (int reading = 0; reading < 10; ++reading) {
        // A reading that fails leaves the sample as it was, so the last one counts again.
        status = adc_get_common(channel, &sample, 0);
        printf("ret=%d,%s=%f\n", status, name, static_cast<double>(sample));
        highest = std::max(highest, sample);
        lowest = std::min(lowest, sample);
        sum += sample;
    }
    const float mean = (sum - highest - lowest) / 8.0f;
    printf("%s=%f\n", sum_name, static_cast<double>(mean));
    return {mean, status};
}

bool counts_as_supply(float type_c_volts) {
    if (!(type_c_volts > type_c_present_volts)) {
        return false;
    }
    // As a USB host the unit itself puts the voltage on the connector.
    if (usb_state_judge() == 0) {
        printf("usb otg");
        return false;
    }
    return true;
}

struct supplies {
    bool ext;
    bool type_c;
    int status; // of the last reading
};

supplies find_supplies() {
    const bool ext = measure(ext_channel, "ext_vol", "ext_vol_sum").volts > ext_present_volts;
    const channel_mean type_c = measure(type_c_channel, "typeC_vol", "typeC_vol_sum");
    const bool type_c_supply = counts_as_supply(type_c.volts);
    printf("ext_status:%d, type_c_status:%d\n", ext, type_c_supply);
    return {ext, type_c_supply, type_c.status};
}

supplies find_type_c_supply() {
    const channel_mean type_c = measure(type_c_channel, "typeC_vol_corvus", "typeC_vol_sum_corvus");
    const bool type_c_supply = counts_as_supply(type_c.volts);
    printf("type_c_status:%d\n", type_c_supply);
    return {false, type_c_supply, type_c.status};
}

// Hundredths of a volt, toward zero, as fine as the table is.
int hundredths(float cell_volts) {
    const float scaled = cell_volts * 100.0f;
    // Negated, so that it is also true for a NaN, whose conversion would be undefined.
    if (!(scaled >= 0.0f)) {
        return 0;
    }
    return static_cast<int>(std::min(scaled, static_cast<float>(bat_vol_tbl_pica[full])));
}

} // namespace

int get_bat_percent(int machine_type, bat_info *info) {
    printf("machine_type=%d,type_pica=%d\n", machine_type, 0);
    if (machine_type != 0 && machine_type != 1) {
        return adc_unknown_channel;
    }
    debug(1, "!!!!!!!!!!!!!!!\n");
    info->bat1_vol = measure(battery_channel, "bat1_vol", "bat1_vol_sum").volts;

    const supplies found = machine_type == 0 ? find_supplies() : find_type_c_supply();
    info->ext_power = found.ext || found.type_c;
    int percent = 0;
    // Two cells in series.
    calc_bat_percent_pica(&percent, info->bat1_vol / 2.0f);
    info->bat1_percent = percent;
    return found.status;
}

int adc_get_common(int channel, float *volts, int raw) {
    if (channel < 1 || channel > last_channel) {
        return adc_unknown_channel;
    }
    char path[64] = {};
    snprintf(path, sizeof(path), "/sys/bus/iio/devices/iio:device0/in_voltage%d_raw", channel);
    const owned_descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file) {
        return adc_open_failed;
    }
    char text[32 + 1] = {};
    if (read(file.get(), text, sizeof(text) - 1) < 0) {
        return adc_read_failed;
    }
    *volts = volts_of(channel, count_of(text), raw);
    return 0;
}

int usb_state_judge() {
    const owned_file file(fopen("/sys/kernel/debug/ffd00000.dwc3/mode", "re"));
    if (file == nullptr) {
        perror("fopen");
        return -1;
    }
    char mode[5] = {};
    // A file without a line leaves the text empty, which is no mode.
    [[maybe_unused]] const char *line = fgets(mode, sizeof(mode), file.get());
    printf("usb state usb state %s\n", mode);
    // Four characters and the terminator: the rest of the line does not matter.
    return memcmp(mode, "host", sizeof(mode));
}

int calc_bat_percent_pica(int *percent, float cell_volts) {
    const int cv = hundredths(cell_volts);
    size_t i = full;
    while (i > 0 && bat_vol_tbl_pica[i] > cv) {
        --i;
    }
    if (i == full) {
        *percent = 100;
        return 0;
    }
    const int lo = bat_vol_tbl_pica[i];
    const int hi = bat_vol_tbl_pica[i + 1];
    // Each step of the table is 10 %, interpolated and rounded to the nearest percent.
    *percent =
        cv < lo ? 0 : 10 * static_cast<int>(i) + ((cv - lo) * 10 + (hi - lo) / 2) / (hi - lo);
    return 0;
}

} // namespace renewer
