#include "simulator/panels/ssd1327_panel.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace simulator;

namespace {

using faults = ssd1327_panel::fault_counts;
using bytes = std::vector<uint8_t>;

void command(ssd1327_panel &panel, const bytes &all) {
    panel.level(0);
    panel.transfer(all);
}

void data(ssd1327_panel &panel, const bytes &all) {
    panel.level(1);
    panel.transfer(all);
}

// A dark panel that is on, turned as the glass is, with the window of 2 addresses by 2 rows in the
// upper left corner.
ssd1327_panel ready() {
    ssd1327_panel panel;
    command(panel, {0xA0, 0x53});
    data(panel, bytes(8192, 0));
    command(panel, {0xAF, 0x15, 0, 1, 0x75, 0, 1});
    return panel;
}

int level_at(const ssd1327_panel &panel, int x, int y) {
    return panel.seen_levels()[static_cast<size_t>(y * 128 + x)];
}

std::vector<int> corner(const ssd1327_panel &panel) {
    std::vector<int> levels;
    for (int i = 0; i < 8; ++i) {
        levels.push_back(level_at(panel, i % 4, i / 4));
    }
    return levels;
}

using corner_levels = std::vector<int>;

TEST(ssd1327_panel, shows_two_pixels_a_byte_row_by_row_and_starts_again) {
    ssd1327_panel panel = ready();
    data(panel, {0x21, 0x43, 0x65, 0x87});
    EXPECT_EQ(corner(panel), (corner_levels{1, 2, 3, 4, 5, 6, 7, 8}));
    data(panel, {0xBA});
    EXPECT_EQ(corner(panel), (corner_levels{10, 11, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(panel.pictures(), 2) << "the whole panel once, the window once";
    EXPECT_EQ(panel.faults(), faults{});
}

TEST(ssd1327_panel, shows_a_wrong_setting_as_a_wrong_picture) {
    const struct {
        uint8_t map;
        int x, y, left, right;
    } cases[] = {
        {0x53, 0, 0, 1, 2},     // as the glass is mounted
        {0x51, 0, 0, 2, 1},     // nibbles not turned
        {0x52, 126, 0, 1, 2},   // columns not turned
        {0x50, 126, 0, 2, 1},   // neither
        {0x43, 0, 127, 1, 2},   // rows not turned
        {0x40, 126, 127, 2, 1}, // nothing turned
    };
    for (const auto &[map, x, y, left, right] : cases) {
        ssd1327_panel panel;
        data(panel, bytes(8192, 0));
        command(panel, {0xAF, 0xA0, map, 0x15, 0, 63, 0x75, 0, 127});
        data(panel, {0x21});
        EXPECT_EQ(level_at(panel, x, y), left) << int{map};
        EXPECT_EQ(level_at(panel, x + 1, y), right) << int{map};
    }
}

TEST(ssd1327_panel, goes_down_first_when_told) {
    ssd1327_panel panel = ready();
    command(panel, {0xA0, 0x57, 0x15, 0, 1});
    data(panel, {0x21, 0x43, 0x65, 0x87});
    EXPECT_EQ(corner(panel), (corner_levels{1, 2, 5, 6, 3, 4, 7, 8}));
}

TEST(ssd1327_panel, shifts_rows) {
    ssd1327_panel panel = ready();
    data(panel, {0x21});
    command(panel, {0xA1, 127});
    EXPECT_EQ(level_at(panel, 0, 1), 1);
    command(panel, {0xA2, 2});
    EXPECT_EQ(level_at(panel, 0, 127), 1);
}

TEST(ssd1327_panel, is_dark_until_it_is_on_and_bright) {
    ssd1327_panel panel = ready();
    data(panel, {0xFF});
    const auto seen = [&panel](const bytes &sent) {
        command(panel, sent);
        return corner(panel);
    };
    EXPECT_EQ(panel.seen().rgb[0], 186) << "the contrast after power-up is 127 of 255";
    EXPECT_EQ(seen({0xAE}), corner_levels(8, 0));
    EXPECT_EQ(seen({0xAF, 0x81, 0}), corner_levels(8, 0));
    EXPECT_EQ(seen({0x81, 255, 0xA6}), corner_levels(8, 0));
    EXPECT_EQ(seen({0xA5}), corner_levels(8, 15));
    EXPECT_EQ(seen({0xA7}), (corner_levels{0, 0, 15, 15, 15, 15, 15, 15}));
    EXPECT_EQ(seen({0xA4}), (corner_levels{15, 15, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(panel.seen().rgb[0], 255);
    EXPECT_EQ(panel.seen().rgb[6], 0);
}

TEST(ssd1327_panel, starts_off_with_anything_in_its_memory) {
    ssd1327_panel panel;
    EXPECT_FALSE(panel.shows());
    command(panel, {0xAF});
    EXPECT_NE(corner(panel), corner_levels(8, level_at(panel, 0, 0)));
}

TEST(ssd1327_panel, takes_parameters_from_transfer_to_transfer) {
    ssd1327_panel panel = ready();
    command(panel, {0x15});
    command(panel, {1});
    command(panel, {1});
    data(panel, {0x21});
    EXPECT_EQ(level_at(panel, 2, 0), 1);
    EXPECT_EQ(panel.faults(), faults{});
}

TEST(ssd1327_panel, counts_what_makes_no_sense) {
    const struct {
        bytes commands;
        faults expected;
    } cases[] = {
        {{0x2C, 0x00}, {.unknown_commands = 2}},
        {{0x15, 0x00}, {.missing_parameters = 1}},
        {{0xFD, 0x16, 0xAE, 0x81, 0x10, 0xFD, 0x12, 0xAE}, {.locked_commands = 2}},
        {{0x15, 2, 1, 0x15, 0, 64, 0x75, 0, 128}, {.bad_windows = 3}},
        {{0xA8, 0x5F, 0xAF}, {.bad_settings = 1}},
        {{0xA0, 0x13, 0xAF}, {.bad_settings = 1}},
    };
    for (const auto &[commands, expected] : cases) {
        ssd1327_panel panel = ready();
        command(panel, commands);
        data(panel, {0});
        EXPECT_EQ(panel.faults(), expected) << "command " << int{commands[0]};
    }
}

TEST(ssd1327_panel, says_what_a_transfer_was) {
    ssd1327_panel panel;
    EXPECT_EQ(panel.transfer(bytes{0x15, 0x00, 0x3F}), "command 15 00 3F");
    panel.level(1);
    EXPECT_EQ(panel.transfer(bytes(64)), "pixels 128");
}

} // namespace
