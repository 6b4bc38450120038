#include "discovery/package_candidate.h"

#include "tests/discovery/storage.h"

#include <gtest/gtest.h>

using namespace renewer;
using namespace storage;
namespace fs = std::filesystem;

namespace {

TEST(package_candidate, names) {
    struct {
        const char *name;
        bool taken;
    } const cases[] = {
        {"update_abc_b20240523.bin", true},  {"update_abc_t20240523.bin", true},
        {"update_b12345678.bin", true},      {"update_b1234567.bin", false}, // 19 characters
        {"update_abc_x20240523.bin", false}, {"update_abc_B20240523.bin", false},
        {"update_ab_b202405233.bin", false}, {"update_abc_b20240523.BIN", false},
        {"Update_abc_b20240523.bin", false}, {"update-abc_b20240523.bin", false},
        {"update_abc_b20240523bin", false},
    };
    for (const auto &[name, taken] : cases) {
        fs::remove_all(directory);
        put_package(fs::path(directory) / name, host_1013);
        EXPECT_EQ(search_in(directory, unit_with("1013")).result, taken) << name;
        EXPECT_EQ(is_package_name(name), taken) << name;
    }
}

TEST(package_candidate, cmp_version_of_the_low_24_bits) {
    struct {
        uint32_t a;
        uint32_t b;
        int sign;
    } const cases[] = {{0, 0, 0},           {1, 0, 1},         {0, 1, -1},
                       {0xffffff, 0, 1},    {0, 0xffffff, -1}, {0xff000001, 1, 0},
                       {0x01000000, 1, -1}, {0x80000002, 1, 1}};
    for (const auto &[a, b, sign] : cases) {
        EXPECT_EQ(cmp_version(a, b), sign) << a << ' ' << b;
    }
}

constexpr const char *host_line = "got   package\n";
constexpr const char *host_refused = "got   package\npn 2/3/17 not fit\n";
constexpr const char *a1_refused = "got   package\n invailed package,pn not fit";
constexpr const char *gnss_line = "got   gnss board package\n";
constexpr const char *gnss_refused = "got   gnss board package\npn 45 not fit\n";
constexpr const char *gnss_a1_refused = "got   gnss board package\npn 6/7 not fit\n";
constexpr const char *radio_line = "got   radio  package\n";
constexpr const char *k618_line = "got   radio  package\nK618 RADIO !\n";
constexpr const char *q7_line = "got   radio  package\nQ7 K618 RADIO !\n";
constexpr const char *radio_refused = "got   radio  package\npn radio not fit\n";
constexpr const char *lband_line = "got  lband  package\n";
constexpr const char *lband_refused = "got  lband  package\npn lband not fit\n";
constexpr const char *gprs_line = "got web  gprs  package\n";
constexpr const char *gprs_refused = "got web  gprs  package\npn gprs not fit\n";

TEST(package_candidate, rules_by_part_number) {
    const struct {
        const char *pn;     // of the unit
        const char *digits; // of the package
        bool fits;
        const char *lines; // after the summary line
    } cases[] = {
        // Digits: 0123456789abcd (d: digit 13).
        {"1013", "00130000000004", true, host_line},
        {"1013", "00130000000005", true, host_line},
        {"1013", "00130000000003", false, host_refused},
        {"1013", "00130000000006", false, host_refused},
        {"1013", "00230000000004", false, host_refused},
        {"1013", "00140000000004", false, host_refused},
        {"10", "00000000000004", false, host_refused},
        {"10:3", "00a30000000004", true, host_line},
        {"A113", "a1130000000004", true, host_line},
        {"A113", "11130000000004", false, a1_refused},
        {"A113", "a0130000000004", false, a1_refused},
        {"A113", "a1140000000004", false, host_refused},
        {"A213", "a1130000000004", true, host_line},
        {"10135678", "00005610000000", true, gnss_line},
        {"10135678", "00005710000000", false, gnss_refused},
        {"10135678", "00007810000000", false, gnss_refused},
        {"A1135678", "00007810000000", true, gnss_line},
        {"A1135678", "00005610000000", false, gnss_a1_refused},
        {"1A135678", "00005610000000", true, gnss_line},
        {"1013567800120000", "00000020062000", true, radio_line},
        {"1013567800120000", "00000020012000", true, k618_line},
        {"1013567800120000", "00000020010000", true, q7_line},
        {"1013567800120000", "00000020060000", false, radio_refused},
        {"1013567800120000", "00000020022000", false, radio_refused},
        {"1013567800120000", "00000020014000", false, radio_refused},
        {"10135678", "00000020000000", false, radio_refused},
        {"1013567800120002", "00000030000000", true, lband_line},
        {"101356780012000\xff", "00000030000000", true, lband_line},
        {"1013567800120001", "00000030000000", false, lband_refused},
        {"101356780012", "00000030000000", false, lband_refused},
        {"1013567834120000", "00000043400000", true, gprs_line},
        {"1013567884120000", "00000043400000", true, gprs_line},
        {"1013567884120000", "00000048400000", true, gprs_line},
        {"1013567894120000", "00000043400000", false, gprs_refused},
        {"1013567835120000", "00000043400000", false, gprs_refused},
        {"1013567800120000", "10135650000004", false, "invailed package!\n"},
        {"1013567800120000", "101356f0000004", false, "invailed package!\n"},
    };
    const std::string path = "/media/sda1/update_abc_b20240523.bin";
    for (const auto &[pn, digits, fits, lines] : cases) {
        put_package(path, digits);
        const search done = search_in(directory, unit_with(pn));
        EXPECT_EQ(done.result, fits) << pn << digits;
        EXPECT_EQ(done.lines.substr(done.lines.find('\n') + 1),
                  lines + (fits ? "last_ver 66051\n\n" + path + "\n" : ""));
        EXPECT_EQ(done.path, fits ? path : "untouched");
    }
}

} // namespace
