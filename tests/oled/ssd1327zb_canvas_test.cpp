#include "oled/ssd1327zb_canvas.h"

#include "tests/support/grey.h"
#include "tests/support/printed.h"

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

    EXPECT_EQ(ssd1327zb_clean_canvas(nullptr), -1);
    canvas without_pixels = {128, 128, 4, nullptr, 8192};
    EXPECT_EQ(ssd1327zb_clean_canvas(&without_pixels), -1);
}

TEST(ssd1327zb_canvas, lies_under_some_boxes) {
    const box inside[] = {{0, 0, 128, 128}, {127, 127, 1, 1}, {0, 0, 0, 0}, {128, 128, 0, 0}};
    for (const box &area : inside) {
        EXPECT_EQ(ssd1327zb_check_box(&area), 0) << area.x << ' ' << area.y;
    }
    const box outside[] = {{1, 0, 128, 128},      {0, 1, 128, 128},    {-1, 0, 1, 1},
                           {0, -1, 1, 1},         {127, 127, 2, 1},    {127, 127, 1, 2},
                           {129, 0, 0, 0},        {1, 0, 65535, 1},    {-1, -1, 129, 129},
                           {-32768, 0, 65535, 1}, {0, 32767, 1, 32769}};
    for (const box &area : outside) {
        EXPECT_EQ(ssd1327zb_check_box(&area), -1) << area.x << ' ' << area.y;
    }
    EXPECT_EQ(ssd1327zb_check_box(nullptr), -1);
}

} // namespace
