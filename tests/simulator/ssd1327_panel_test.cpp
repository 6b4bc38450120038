#include "simulator/panels/ssd1327_panel.h"

#include "tests/simulator/wire.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

using faults = ssd1327_panel::fault_counts;
using corner_levels = std::vector<int>;
const std::string dark = " D" + std::string(2 * 8192, '0') + " ";

// A dark panel that is on, rotated as the glass is, with the window of 2 addresses by 2 rows in the
// upper left corner.
ssd1327_panel ready() {
    ssd1327_panel panel;
    act(panel, "CA053" + dark + "CAF150001750001");
    return panel;
}

int level_at(const ssd1327_panel &panel, int x, int y) {
    return panel.seen_levels()[static_cast<size_t>(y * 128 + x)];
}

// The upper left four columns of two rows after a script.
corner_levels corner(ssd1327_panel &panel, const std::string &script) {
    act(panel, script);
    corner_levels levels;
    for (int i = 0; i < 8; ++i) {
        levels.push_back(level_at(panel, i % 4, i / 4));
    }
    return levels;
}

TEST(ssd1327_panel, shows_two_pixels_a_byte_row_by_row_and_starts_again) {
    ssd1327_panel panel = ready();
    EXPECT_EQ(corner(panel, "D21436587"), (corner_levels{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(corner(panel, "DBA"), (corner_levels{10, 11, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(panel.pictures(), 2) << "the whole panel once, the window once";
    EXPECT_EQ(panel.faults(), faults{});
    act(panel, "C15 C01 C01 D21");
    EXPECT_EQ(level_at(panel, 2, 0), 1) << "parameters come from transfer to transfer";
    EXPECT_EQ(panel.faults(), faults{});
    EXPECT_EQ(corner(panel, "CA057150001750001 D21436587"), (corner_levels{1, 2, 5, 6, 3, 4, 7, 8}))
        << "down first";
}

TEST(ssd1327_panel, shows_a_wrong_setting_as_a_wrong_picture) {
    const struct {
        const char *map;
        int x, y, left, right;
    } cases[] = {
        {"53", 0, 0, 1, 2},     // as the glass is mounted
        {"51", 0, 0, 2, 1},     // nibbles not swapped
        {"52", 126, 0, 1, 2},   // columns not mirrored
        {"50", 126, 0, 2, 1},   // neither
        {"43", 0, 127, 1, 2},   // rows not mirrored
        {"40", 126, 127, 2, 1}, // none of these
    };
    for (const auto &[map, x, y, left, right] : cases) {
        ssd1327_panel panel;
        act(panel, dark + "CAFA0" + map + "15003F75007F D21");
        EXPECT_EQ(level_at(panel, x, y), left) << map;
        EXPECT_EQ(level_at(panel, x + 1, y), right) << map;
    }
    ssd1327_panel shifted = ready();
    act(shifted, "D21 CA17F");
    EXPECT_EQ(level_at(shifted, 0, 1), 1);
    act(shifted, "CA202");
    EXPECT_EQ(level_at(shifted, 0, 127), 1);
}

TEST(ssd1327_panel, is_dark_until_it_is_on_and_bright) {
    ssd1327_panel panel = ready();
    act(panel, "DFF");
    EXPECT_EQ(panel.seen().rgb[0], 186) << "the contrast after power-up is 127 of 255";
    EXPECT_EQ(corner(panel, "CAE"), corner_levels(8, 0));
    EXPECT_EQ(corner(panel, "CAF8100"), corner_levels(8, 0));
    EXPECT_EQ(corner(panel, "C81FFA6"), corner_levels(8, 0));
    EXPECT_EQ(corner(panel, "CA5"), corner_levels(8, 15));
    EXPECT_EQ(corner(panel, "CA7"), (corner_levels{0, 0, 15, 15, 15, 15, 15, 15}));
    EXPECT_EQ(corner(panel, "CA4"), (corner_levels{15, 15, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(panel.seen().rgb[0], 255);
    EXPECT_EQ(panel.seen().rgb[6], 0);
    ssd1327_panel fresh;
    EXPECT_FALSE(fresh.shows());
    EXPECT_NE(corner(fresh, "CAF"), corner_levels(8, level_at(fresh, 0, 0)));
}

TEST(ssd1327_panel, counts_what_makes_no_sense) {
    const struct {
        const char *script;
        faults expected;
    } cases[] = {
        {"C2C00", {.unknown_commands = 2}},
        {"C1500", {.missing_parameters = 1}},
        {"CFD16AE8110FD12AE", {.locked_commands = 2}},
        {"C150201150040750080", {.bad_windows = 3}},
        {"CA85FAF", {.bad_settings = 1}},
        {"CA013AF", {.bad_settings = 1}},
    };
    for (const auto &[script, expected] : cases) {
        ssd1327_panel panel = ready();
        act(panel, script);
        act(panel, "D00");
        EXPECT_EQ(panel.faults(), expected) << script;
    }
}

TEST(ssd1327_panel, describes_each_transfer) {
    ssd1327_panel panel;
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>{0x15, 0x00, 0x3F}), "command 15 00 3F");
    panel.level(1);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>(64)), "pixels 128");
}

} // namespace
