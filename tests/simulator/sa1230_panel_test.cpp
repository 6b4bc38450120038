#include "simulator/panels/sa1230_panel.h"

#include "tests/simulator/wire.h"
#include "tests/support/pictures.h"

#include <gtest/gtest.h>

#include <array>

using namespace simulator;

namespace {

using faults = sa1230_panel::fault_counts;

// A panel that shows its memory, with a window of 2 columns by 2 rows.
sa1230_panel ready() {
    sa1230_panel panel;
    act(panel, "P1 R0 R1 C51 DFF C3A D05 C11 C29 C2A D00000001 C2B D00000001");
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
const std::string four_colours = " C2C DF80007E0001FFFFF";

TEST(sa1230_panel, shows_pixels_upright) {
    sa1230_panel panel = ready();
    act(panel, four_colours);
    EXPECT_EQ(panel.seen().width, 294);
    EXPECT_EQ(panel.seen().height, 126);
    EXPECT_EQ(seen(panel, 293, 0), red) << "the first pixel is the upper right corner";
    EXPECT_EQ(seen(panel, 293, 1), green) << "columns go down";
    EXPECT_EQ(seen(panel, 292, 0), blue) << "rows go left";
    EXPECT_EQ(seen(panel, 292, 1), white);
    EXPECT_EQ(seen(panel, 291, 0), black);
    EXPECT_EQ(panel.faults(), faults{});
    EXPECT_EQ(panel.pictures(), 1);
    act(panel, "C2C D00F8");
    EXPECT_NE(seen(panel, 293, 0), red) << "bytes in the wrong order";
}

TEST(sa1230_panel, accepts_data_in_any_portions) {
    sa1230_panel panel = ready();
    act(panel, "C2A D00 D7D D00 D7D C2C DF8 D0000 D1F");
    EXPECT_EQ(seen(panel, 293, 125), red);
    EXPECT_EQ(seen(panel, 292, 125), blue);
    EXPECT_EQ(panel.faults(), faults{});
}

TEST(sa1230_panel, shows_nothing_unless_all_lines_and_commands_say_so) {
    for (const char *change : {"P0", "R0", "C10", "C28", "C51 D00", "R0 R1"}) {
        sa1230_panel panel = ready();
        act(panel, four_colours);
        EXPECT_TRUE(panel.shows()) << change;
        act(panel, change);
        EXPECT_FALSE(panel.shows()) << change;
        EXPECT_EQ(seen(panel, 293, 0), black) << change;
    }
}

TEST(sa1230_panel, counts_what_a_driver_does_wrong) {
    const struct {
        std::string script;
        faults expected;
    } cases[] = {
        {"C77", {.unknown_commands = 1}},
        {"C2A007D", {.unknown_commands = 2, .missing_data = 1}}, // data at the command level
        {"D2C", {.stray_data = 1}},
        {"C11 D0102", {.stray_data = 2}},
        {"C2A D0000 C29", {.missing_data = 1}},
        {"C2A D00050004", {.bad_windows = 1}}, // the wrong way round
        {"C2A D0000007E", {.bad_windows = 1}}, // beyond the panel
        {"C2B D00000126", {.bad_windows = 1}},
        {"C2B D00000000" + four_colours, {.excess_pixels = 2}},
        {"C2C DF8 C29", {.half_pixels = 1}},
        {"C3A D06" + four_colours, {.other_formats = 1}}, // pixels of 18 bits
        {"R0 C29", {.unheard = 1}},
        {"P0 P1 C29", {.unheard = 1}}, // never reset after power came
    };
    for (const auto &[script, expected] : cases) {
        sa1230_panel panel = ready();
        EXPECT_EQ(panel.faults(), faults{});
        act(panel, script);
        EXPECT_EQ(panel.faults(), expected) << script;
    }
}

TEST(sa1230_panel, writes_its_picture_as_a_file_that_another_program_reads) {
    sa1230_panel panel = ready();
    act(panel, four_colours);
    write_png("/tmp/seen.png", panel.seen());
    const std::string ppm = netpbm("pngtopnm", get_file("/tmp/seen.png"));
    const std::vector<uint8_t> rgb = panel.seen().rgb;
    EXPECT_TRUE(ppm == ppm_of(294, 126, std::string(rgb.begin(), rgb.end())));
    EXPECT_THROW(write_png("/none/seen.png", panel.seen()), std::runtime_error);
    EXPECT_EQ(read_png("/tmp/seen.png"), panel.seen());
    EXPECT_THROW(read_png("/tmp/none.png"), std::runtime_error);
}

TEST(sa1230_panel, describes_each_transfer) {
    sa1230_panel panel = ready();
    panel.level(0);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>{0x2A}), "command 2A");
    panel.level(1);
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>{0, 0, 0, 0x7D}), "data 00 00 00 7D");
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>(9)), "data 9");
    act(panel, "C2C D");
    EXPECT_EQ(panel.transfer(std::vector<uint8_t>(4096)), "pixels 4096");
}

} // namespace
