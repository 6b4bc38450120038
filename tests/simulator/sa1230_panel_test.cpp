#include "simulator/panels/sa1230_panel.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

#include <array>

using namespace simulator;

namespace {

using faults = sa1230_panel::fault_counts;

void command(sa1230_panel &panel, uint8_t code, const std::vector<uint8_t> &data = {}) {
    panel.level(0);
    panel.transfer(std::vector<uint8_t>{code});
    panel.level(1);
    if (!data.empty()) {
        panel.transfer(data);
    }
}

// A panel that shows its memory, with a window of 2 columns by 2 rows.
sa1230_panel ready() {
    sa1230_panel panel;
    panel.power(true);
    panel.reset(false);
    panel.reset(true);
    command(panel, 0x51, {0xFF});
    command(panel, 0x3A, {0x05});
    command(panel, 0x11);
    command(panel, 0x29);
    command(panel, 0x2A, {0, 0, 0, 1});
    command(panel, 0x2B, {0, 0, 0, 1});
    return panel;
}

// Red, green, blue of a place as the user sees it.
std::array<int, 3> seen(const sa1230_panel &panel, int x, int y) {
    const picture all = panel.seen();
    const uint8_t *pixel = all.rgb.data() + (y * all.width + x) * 3;
    return {pixel[0], pixel[1], pixel[2]};
}

constexpr std::array<int, 3> black = {0, 0, 0}, red = {255, 0, 0}, green = {0, 255, 0},
                             blue = {0, 0, 255}, white = {255, 255, 255};
const std::vector<uint8_t> four_colours = {0xF8, 0x00, 0x07, 0xE0, 0x00, 0x1F, 0xFF, 0xFF};

TEST(sa1230_panel, shows_pixels_upright) {
    sa1230_panel panel = ready();
    command(panel, 0x2C, four_colours);
    EXPECT_EQ(panel.seen().width, 294);
    EXPECT_EQ(panel.seen().height, 126);
    EXPECT_EQ(seen(panel, 293, 0), red) << "the first pixel is the upper right corner";
    EXPECT_EQ(seen(panel, 293, 1), green) << "columns go down";
    EXPECT_EQ(seen(panel, 292, 0), blue) << "rows go left";
    EXPECT_EQ(seen(panel, 292, 1), white);
    EXPECT_EQ(seen(panel, 291, 0), black);
    EXPECT_EQ(panel.faults(), faults{});
    EXPECT_EQ(panel.pictures(), 1);
}

TEST(sa1230_panel, takes_data_in_any_portions) {
    sa1230_panel panel = ready();
    command(panel, 0x2A);
    for (const uint8_t byte : std::array<uint8_t, 4>{0, 125, 0, 125}) {
        panel.transfer(std::vector<uint8_t>{byte});
    }
    command(panel, 0x2C, {0xF8});
    panel.transfer(std::vector<uint8_t>{0x00, 0x00});
    panel.transfer(std::vector<uint8_t>{0x1F});
    EXPECT_EQ(seen(panel, 293, 125), red);
    EXPECT_EQ(seen(panel, 292, 125), blue);
    EXPECT_EQ(panel.faults(), faults{});
}

TEST(sa1230_panel, shows_nothing_unless_all_lines_and_commands_say_so) {
    const struct {
        const char *what;
        void (*change)(sa1230_panel &);
    } cases[] = {
        {"power off", [](sa1230_panel &panel) { panel.power(false); }},
        {"in reset", [](sa1230_panel &panel) { panel.reset(false); }},
        {"asleep", [](sa1230_panel &panel) { command(panel, 0x10); }},
        {"display off", [](sa1230_panel &panel) { command(panel, 0x28); }},
        {"dark", [](sa1230_panel &panel) { command(panel, 0x51, {0}); }},
        {"reset",
         [](sa1230_panel &panel) {
             panel.reset(false);
             panel.reset(true);
         }},
    };
    for (const auto &[what, change] : cases) {
        sa1230_panel panel = ready();
        command(panel, 0x2C, four_colours);
        EXPECT_TRUE(panel.shows()) << what;
        change(panel);
        EXPECT_FALSE(panel.shows()) << what;
        EXPECT_EQ(seen(panel, 293, 0), black) << what;
    }
}

TEST(sa1230_panel, sees_what_a_driver_does_wrong) {
    const struct {
        const char *what;
        void (*act)(sa1230_panel &);
        faults expected;
    } cases[] = {
        {"command unknown",
         [](sa1230_panel &panel) { command(panel, 0x77); },
         {.unknown_commands = 1}},
        {"data at the command level",
         [](sa1230_panel &panel) {
             panel.level(0);
             panel.transfer(std::vector<uint8_t>{0x2A, 0x00, 0x7D});
         },
         {.unknown_commands = 2, .missing_data = 1}},
        {"command at the data level",
         [](sa1230_panel &panel) { panel.transfer(std::vector<uint8_t>{0x2C}); },
         {.stray_data = 1}},
        {"data without a command",
         [](sa1230_panel &panel) {
             command(panel, 0x11, {1, 2});
         },
         {.stray_data = 2}},
        {"half a window",
         [](sa1230_panel &panel) {
             command(panel, 0x2A, {0, 0});
             command(panel, 0x29);
         },
         {.missing_data = 1}},
        {"window turned round",
         [](sa1230_panel &panel) {
             command(panel, 0x2A, {0, 5, 0, 4});
         },
         {.bad_windows = 1}},
        {"column beyond the panel",
         [](sa1230_panel &panel) {
             command(panel, 0x2A, {0, 0, 0, 126});
         },
         {.bad_windows = 1}},
        {"row beyond the panel",
         [](sa1230_panel &panel) {
             command(panel, 0x2B, {0, 0, 0x01, 0x26});
         },
         {.bad_windows = 1}},
        {"window too small for the picture",
         [](sa1230_panel &panel) {
             command(panel, 0x2B, {0, 0, 0, 0});
             command(panel, 0x2C, four_colours);
         },
         {.excess_pixels = 2}},
        {"half a pixel",
         [](sa1230_panel &panel) {
             command(panel, 0x2C, {0xF8});
             command(panel, 0x29);
         },
         {.half_pixels = 1}},
        {"pixels of 18 bits",
         [](sa1230_panel &panel) {
             command(panel, 0x3A, {0x06});
             command(panel, 0x2C, four_colours);
         },
         {.other_formats = 1}},
        {"in reset",
         [](sa1230_panel &panel) {
             panel.reset(false);
             command(panel, 0x29);
         },
         {.unheard = 1}},
        {"never reset after power came",
         [](sa1230_panel &panel) {
             panel.power(false);
             panel.power(true);
             command(panel, 0x29);
         },
         {.unheard = 1}},
    };
    for (const auto &[what, act, expected] : cases) {
        sa1230_panel panel = ready();
        EXPECT_EQ(panel.faults(), faults{}) << what;
        act(panel);
        EXPECT_EQ(panel.faults(), expected) << what;
    }
}

TEST(sa1230_panel, shows_bytes_in_the_wrong_order_in_wrong_colours) {
    sa1230_panel panel = ready();
    command(panel, 0x2C, {0x00, 0xF8});
    EXPECT_NE(seen(panel, 293, 0), red);
}

TEST(sa1230_panel, gives_its_picture_as_a_file_that_another_program_reads) {
    sa1230_panel panel = ready();
    command(panel, 0x2C, four_colours);
    write_png("/tmp/seen.png", panel.seen());
    const std::string ppm = netpbm("pngtopnm", get_file("/tmp/seen.png"));
    const std::vector<uint8_t> rgb = panel.seen().rgb;
    EXPECT_TRUE(ppm == ppm_of(294, 126, std::string(rgb.begin(), rgb.end())));
    EXPECT_THROW(write_png("/none/seen.png", panel.seen()), std::runtime_error);
}

TEST(sa1230_panel, tells_of_each_transfer) {
    sa1230_panel panel = ready();
    panel.level(0);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>{0x2A}), "command 2A");
    panel.level(1);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>{0, 0, 0, 0x7D}), "data 00 00 00 7D");
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>(9)), "data 9");
    command(panel, 0x2C);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>(4096)), "pixels 4096");
}

} // namespace
