#include "oled/ssd1327zb_canvas.h"

#include "tests/support/grey.h"
#include "tests/support/output.h"
#include "tests/support/scarce_memory.h"

#include <gtest/gtest.h>

using namespace renewer;

namespace {

TEST(ssd1327zb_canvas, is_dark_when_new_and_when_cleaned) {
    canvas *frame = ssd1327zb_create_canvas();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->width, 128);
    EXPECT_EQ(frame->height, 128);
    EXPECT_EQ(frame->bpp, 4);
    EXPECT_EQ(frame->size, 8192u);
    EXPECT_TRUE(levels_of(frame->buf) == grey_levels{});
    memset(frame->buf, 0xA5, frame->size);
    EXPECT_EQ(ssd1327zb_clean_canvas(frame), 0);
    EXPECT_TRUE(levels_of(frame->buf) == grey_levels{});
    ssd1327zb_destroy_canvas(&frame);
    EXPECT_EQ(frame, nullptr);
    ssd1327zb_destroy_canvas(&frame);
    ssd1327zb_destroy_canvas(nullptr);
}

TEST(ssd1327zb_canvas, cannot_be_cleaned_without_pixels) {
    EXPECT_EQ(ssd1327zb_clean_canvas(nullptr), -1);
    canvas without_pixels = {128, 128, 4, nullptr, 8192};
    EXPECT_EQ(ssd1327zb_clean_canvas(&without_pixels), -1);
}

TEST(ssd1327zb_canvas, leaves_nothing_allocated_when_memory_runs_out) {
    const char *const messages[] = {"create canvas struct failed\n", "create canvas addr failed\n"};
    for (int allocations = 0; allocations < 2; ++allocations) {
        output_listener printed;
        allocations_left = allocations;
        EXPECT_EQ(ssd1327zb_create_canvas(), nullptr);
        allocations_left = INT_MAX;
        EXPECT_EQ(printed.text, messages[allocations]);
    }
    allocations_left = 2;
    canvas *frame = ssd1327zb_create_canvas();
    allocations_left = INT_MAX;
    EXPECT_NE(frame, nullptr) << "the control";
    ssd1327zb_destroy_canvas(&frame);
}

TEST(ssd1327zb_canvas, tells_which_boxes_lie_on_the_panel) {
    const struct {
        box area;
        int result;
    } cases[] = {
        {{0, 0, 128, 128}, 0},       {{1, 0, 128, 128}, -1},
        {{0, 1, 128, 128}, -1},      {{-1, 0, 1, 1}, -1},
        {{0, -1, 1, 1}, -1},         {{127, 127, 1, 1}, 0},
        {{127, 127, 2, 1}, -1},      {{127, 127, 1, 2}, -1},
        {{0, 0, 0, 0}, 0},           {{128, 128, 0, 0}, 0},
        {{129, 0, 0, 0}, -1},        {{0, 0, 65535, 1}, -1},
        {{1, 0, 65535, 1}, -1},      {{32767, 32767, 65535, 1}, -1},
        {{-32768, 0, 65535, 1}, -1}, {{-1, -1, 129, 129}, -1},
        {{0, 32767, 1, 32769}, -1},
    };
    for (const auto &[area, result] : cases) {
        EXPECT_EQ(ssd1327zb_check_box(&area), result)
            << area.x << ' ' << area.y << ' ' << area.width << ' ' << area.height;
    }
    EXPECT_EQ(ssd1327zb_check_box(nullptr), -1);
}

} // namespace
