#include "power/bat.h"

#include "tests/support/files.h"
#include "tests/support/output.h"
#include "tests/support/printed.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

using namespace renewer;

namespace {

namespace fs = std::filesystem;

const fs::path adc = "/sys/bus/iio/devices/iio:device0";
const fs::path usb_mode = "/sys/kernel/debug/ffd00000.dwc3/mode";

fs::path channel_file(int channel) {
    return adc / ("in_voltage" + std::to_string(channel) + "_raw");
}

// The counts of a channel, one for each reading, the last one for all that follow; an empty one
// stands for a missing file.
using counts = std::vector<std::string>;
const counts none = {""};

// Text of ten readings of the same voltage.
std::string readings(const std::string &name, const std::string &volts) {
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += "ret=0," + name + "=" + volts + "\n";
    }
    return text;
}

struct measurement {
    int status;
    bat_info info;
    std::string printed;
};

void set_channel(int channel, const std::string &count) {
    fs::remove(channel_file(channel));
    if (!count.empty()) {
        put_file(channel_file(channel), count + "\n");
    }
}

measurement measure(int machine_type, std::map<int, counts> channels) {
    const auto prepare = [&](int channel, size_t reading) {
        const counts &list = channels[channel];
        set_channel(channel, list[std::min(reading, list.size() - 1)]);
    };
    for (const auto &[channel, list] : channels) {
        prepare(channel, 0);
    }
    std::map<int, size_t> taken;
    output_listener output([&](std::string_view line) {
        for (const auto &[name, channel] : {std::pair{",bat1", 1}, {",ext", 2}, {",typeC", 3}}) {
            if (line.starts_with("ret=") && line.find(name) != line.npos) {
                prepare(channel, ++taken[channel]);
            }
        }
    });
    bat_info info = {};
    const int status = get_bat_percent(machine_type, &info);
    for (const auto &[channel, list] : channels) {
        EXPECT_EQ(taken[channel], machine_type == 1 && channel == 2 ? 0u : 10u) << channel;
    }
    return {status, info, output.text};
}

TEST(bat, percentage_of_every_hundredth_of_a_volt) {
    // Computed with fractions; single precision puts the product of some voltages just below the
    // whole hundredth, none of them between 2.85 V and 4.10 V.
    constexpr std::array<int, 130> from_280 = {
        0,  0,  0,  0,  0,  0,  0,  0,  1,  1,  1,  1,  2,  2,  2,  2,  2,  3,  3,  3,  3,  4,
        4,  4,  4,  4,  5,  5,  5,  5,  6,  6,  6,  6,  6,  7,  7,  7,  7,  8,  8,  8,  8,  8,
        9,  9,  9,  9,  10, 10, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 23, 27, 30, 31, 33,
        34, 36, 37, 39, 40, 42, 43, 45, 47, 48, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61,
        62, 63, 64, 66, 67, 68, 69, 70, 71, 72, 73, 74, 76, 77, 78, 79, 80, 81, 82, 83, 84, 85,
        85, 86, 87, 88, 89, 90, 91, 91, 92, 93, 93, 94, 95, 95, 96, 97, 97, 98, 99, 99};
    for (int hundredths = 0; hundredths <= 450; ++hundredths) {
        const size_t index = static_cast<size_t>(std::clamp(hundredths - 280, 0, 129));
        const int expected = hundredths >= 410 ? 100 : from_280[index];
        int percent = -1;
        EXPECT_EQ(calc_bat_percent_pica(&percent, static_cast<float>(hundredths / 100.0)), 0);
        EXPECT_EQ(percent, expected) << hundredths;
    }
    const std::pair<float, int> bounds[] = {{-0.01f, 0},       {-1e30f, 0},    {-INFINITY, 0},
                                            {NAN, 0},          {2.849f, 0},    {3.4299f, 27},
                                            {4.0999999f, 100}, {INFINITY, 100}};
    for (const auto &[volts, expected] : bounds) {
        int percent = -1;
        EXPECT_EQ(calc_bat_percent_pica(&percent, volts), 0);
        EXPECT_EQ(percent, expected) << volts;
    }
}

// The voltages are the nearest single-precision values of results computed in double precision;
// most differ in their last digits from results computed in single precision throughout.
TEST(adc, converts_each_channel_by_its_scale) {
    const struct {
        int channel;
        const char *text;
        int raw;
        float volts;
    } cases[] = {
        {1, "800\n", 0, 7.39706755f},
        {1, "-5\n", 0, -0.0462316722f},
        {2, "188\n", 0, 8.01692009f},
        {3, "256\n", 0, 4.50439882f},
        {3, "5592407\n", 0, 98400.125f},
        {9, "2048\n", 0, 1.6504029f},
        {1, "4095\n", 1, 3.29999995f},
        {2, "2048\n", -1, 1.6504029f},
        {1, "  \t800 mV", 0, 7.39706755f},
        {1, "", 0, 0.0f},
        {1, "no count\n", 0, 0.0f},
        {1, "99999999999999999999999999999999", 0, 19856352.0f},
        {1, "000000000000000000000000000008001", 0, 7.39706755f}, // 32 bytes are read
    };
    for (const auto &[channel, text, raw, expected] : cases) {
        put_file(channel_file(channel), text);
        float volts = -1.0f;
        EXPECT_EQ(printed([&, channel = channel, raw = raw] {
                      EXPECT_EQ(adc_get_common(channel, &volts, raw), 0);
                  }),
                  "");
        EXPECT_EQ(volts, expected) << channel << " " << text;
    }
}

TEST(adc, failures_leave_the_voltage_as_it_was) {
    fs::create_directories(channel_file(4)); // opens, and cannot be read
    put_file(channel_file(0), "5\n");
    put_file(channel_file(10), "5\n");
    const std::pair<int, int> cases[] = {{0, 45},         {10, 45}, {-1, 45},
                                         {INT32_MAX, 45}, {5, 46},  {4, 47}};
    for (const auto &[channel, status] : cases) {
        float volts = 1.25f;
        EXPECT_EQ(adc_get_common(channel, &volts, 0), status) << channel;
        EXPECT_EQ(volts, 1.25f) << channel;
    }
}

TEST(bat, prints_each_reading_each_mean_and_the_decisions) {
    const std::map<int, counts> supplies = {{1, {"742"}}, {2, {"300"}}, {3, {"284"}}};
    put_file(usb_mode, "device\n");
    const measurement both = measure(0, supplies);
    EXPECT_EQ(both.printed, "machine_type=0,type_pica=0\n!!!!!!!!!!!!!!!\n" +
                                readings("bat1_vol", "6.860780") + "bat1_vol_sum=6.860780\n" +
                                readings("ext_vol", "12.591000") + "ext_vol_sum=12.591000\n" +
                                readings("typeC_vol", "4.997067") + "typeC_vol_sum=4.997067\n" +
                                "usb state usb state devi\n"
                                "ext_status:1, type_c_status:1\n");
    const measurement type_c = measure(1, supplies);
    EXPECT_EQ(type_c.printed, "machine_type=1,type_pica=0\n!!!!!!!!!!!!!!!\n" +
                                  readings("bat1_vol", "6.860780") + "bat1_vol_sum=6.860780\n" +
                                  readings("typeC_vol_corvus", "4.997067") +
                                  "typeC_vol_sum_corvus=4.997067\n"
                                  "usb state usb state devi\n"
                                  "type_c_status:1\n");
    for (const measurement &m : {both, type_c}) {
        EXPECT_EQ(m.status, 0);
        EXPECT_EQ(m.info.ext_power, 1);
        EXPECT_EQ(m.info.bat1_vol, 6.86077976f);
        EXPECT_EQ(m.info.bat1_percent, 30);
    }
}

TEST(bat, unknown_model_measures_nothing) {
    for (const int machine_type : {2, -1}) {
        bat_info info = {1, 2.5f, 3};
        EXPECT_EQ(printed([&] { EXPECT_EQ(get_bat_percent(machine_type, &info), 45); }),
                  "machine_type=" + std::to_string(machine_type) + ",type_pica=0\n");
        EXPECT_EQ(std::tuple(info.ext_power, info.bat1_vol, info.bat1_percent),
                  std::tuple(1, 2.5f, 3));
    }
}

TEST(bat, mean_without_the_highest_and_the_lowest_reading) {
    const counts outliers = {"700", "700", "700", "700", "2000", "1", "700"};
    const counts rising = {"701", "702", "703", "704", "705", "706", "707", "708", "709", "710"};
    const struct {
        counts battery;
        float volts;
        int percent;
    } cases[] = {
        {{"742"}, 6.86077976f, 30},
        {{"741"}, 6.85153294f, 27},
        {outliers, 6.47243404f, 8},
        {rising, 6.52328968f, 9},
        {{"2200"}, 20.3846779f, 100}, // all above 20 V: 20.0 is dropped as the lowest
        {{"-100"}, -1.04021263f, 0},  // all below 0 V: 0.0 is dropped as the highest
        {{"742", "", "", "", "742"}, 6.86077976f, 30}, // a failed reading repeats the one before
        {{"", "", "", "", "742"}, 4.28798771f, 0},     // and is 0.0 before the first success
    };
    for (const auto &[battery, volts, percent] : cases) {
        const measurement m = measure(0, {{1, battery}, {2, {"0"}}, {3, {"0"}}});
        EXPECT_EQ(m.info.bat1_vol, volts) << m.printed;
        EXPECT_EQ(m.info.bat1_percent, percent) << m.printed;
        EXPECT_EQ(m.status, 0) << m.printed;
    }
    const measurement absent = measure(0, {{1, none}, {2, none}, {3, none}});
    EXPECT_EQ(std::tuple(absent.status, absent.info.ext_power, absent.info.bat1_percent),
              std::tuple(46, 0, 0));
    const counts last_one_works = {"", "", "", "", "", "", "", "", "", "0"};
    EXPECT_EQ(measure(0, {{1, none}, {2, none}, {3, last_one_works}}).status, 0);
}

// After one huge reading a single-precision sum moves in steps of 8 V (4 V for type-C), and a first
// reading that failed is the lowest: the mean is then exactly the limit.
TEST(bat, external_power) {
    const std::string huge = "2147483647";
    const counts ext_8_0 = {"", huge, "188"};
    const counts type_c_4_5 = {"", huge, "255", "255", "255", "255", "255", "255", "255", "400"};
    const struct {
        int machine_type;
        counts ext;
        counts type_c;
        const char *mode; // empty: no mode file
        int ext_power;
        const char *decision;
    } cases[] = {
        {0, {"187"}, {"0"}, "host", 0, "\next_status:0, type_c_status:0\n"},
        {0, ext_8_0, {"0"}, "host", 0, "\next_status:0, type_c_status:0\n"},
        {0, {"188"}, {"0"}, "host", 1, "\next_status:1, type_c_status:0\n"},
        {0, {"0"}, {"255"}, "device", 0, "\next_status:0, type_c_status:0\n"},
        {0, {"0"}, type_c_4_5, "device", 0, "\next_status:0, type_c_status:0\n"},
        {0, {"0"}, {"256"}, "device", 1, "devi\next_status:0, type_c_status:1\n"},
        {0, {"0"}, {"284"}, "", 1, "\next_status:0, type_c_status:1\n"},
        {0, {"0"}, {"284"}, "host\n", 0, "host\nusb otgext_status:0, type_c_status:0\n"},
        {0, {"188"}, {"284"}, "host", 1, "host\nusb otgext_status:1, type_c_status:0\n"},
        {1, {"300"}, {"255"}, "device", 0, "\ntype_c_status:0\n"},
        {1, {"0"}, {"256"}, "device", 1, "devi\ntype_c_status:1\n"},
    };
    for (const auto &[machine_type, ext, type_c, mode, ext_power, decision] : cases) {
        fs::remove(usb_mode);
        if (*mode != '\0') {
            put_file(usb_mode, mode);
        }
        const measurement m = measure(machine_type, {{1, {"800"}}, {2, ext}, {3, type_c}});
        EXPECT_EQ(m.info.ext_power, ext_power) << m.printed;
        EXPECT_TRUE(m.printed.ends_with(decision)) << m.printed;
    }
}

TEST(usb_state, only_host_is_recognised) {
    const struct {
        const char *mode;
        bool host;
        const char *line;
    } cases[] = {{"host\n", true, "host"},  {"host", true, "host"},  {"hosts of it", true, "host"},
                 {"hos\n", false, "hos\n"}, {"\nhost", false, "\n"}, {"HOST", false, "HOST"},
                 {"device", false, "devi"}, {"", false, ""}};
    EXPECT_EQ(complained([] { EXPECT_EQ(usb_state_judge(), -1); }),
              "fopen: No such file or directory\n");
    for (const auto &[mode, host, line] : cases) {
        put_file(usb_mode, mode);
        EXPECT_EQ(printed([&, host = host, mode = mode] {
                      EXPECT_EQ(usb_state_judge() == 0, host) << mode;
                  }),
                  std::string("usb state usb state ") + line + "\n");
    }
}

} // namespace
