#include "oled/ssd1327zb_draw_border.h"

#include "tests/support/grey.h"
#include "tests/support/printed.h"

using namespace renewer;

namespace {

// The border is the box without the box that is smaller by the thickness on each side.
bool is_border(const box &area, int thickness, int x, int y) {
    const auto inside = [&](int margin) {
        return x >= area.x + margin && x < area.x + area.width - margin && y >= area.y + margin &&
               y < area.y + area.height - margin;
    };
    return inside(0) && !inside(thickness);
}

grey_levels with_border(grey_levels levels, const box &area, int thickness, int level) {
    for (int i = 0; i < 128 * 128; ++i) {
        if (is_border(area, thickness, i % 128, i / 128)) {
            levels[static_cast<size_t>(i)] = static_cast<uint8_t>(level);
        }
    }
    return levels;
}

TEST(ssd1327zb_draw_border, draws_any_border_and_nothing_else) {
    any_canvas drawn;
    int done = 0, invalid_boxes = 0, too_thick = 0;
    for (int turn = 0; turn < 2000; ++turn) {
        const box area = thrown_box();
        const int thickness = thrown(0, 3) == 0 ? thrown(0, 255) : thrown(0, 12);
        const int percentage = thrown(0, 3) == 0 ? thrown(0, 255) : thrown(0, 101);
        const grey_levels before = drawn.levels();
        int result = 0;
        const std::string said = printed([&] {
            result =
                ssd1327zb_draw_border_on_canvas(drawn.frame, &area, static_cast<uint8_t>(thickness),
                                                static_cast<uint8_t>(percentage));
        });
        const int band = thickness == 0 ? 1 : thickness;
        const bool valid = lies_on_panel(area) && area.width > 0 && area.height > 0;
        const bool fits = valid && 2 * band <= area.width && 2 * band <= area.height;
        ++(fits ? done : valid ? too_thick : invalid_boxes);
        ASSERT_EQ(result, fits ? 0 : -1);
        ASSERT_EQ(said.empty(), fits);
        ASSERT_TRUE(
            drawn.levels() ==
            (fits ? with_border(before, area, band, std::min(percentage, 100) * 15 / 100) : before))
            << area.x << ' ' << area.y << ' ' << area.width << ' ' << area.height;
    }
    EXPECT_GT(std::min({done, too_thick, invalid_boxes}), 200);
}

TEST(ssd1327zb_draw_border, says_what_it_cannot_draw) {
    const struct {
        box area;
        uint8_t thickness;
        const char *message;
    } cases[] = {
        {{120, -2, 9, 9}, 1, "(120,-2,9,9) is a invalid box \n"},
        {{5, 6, 0, 9}, 1, "(5,6,0,9) is a invalid box \n"},
        {{5, 6, 9, 0}, 1, "(5,6,9,0) is a invalid box \n"},
        {{1, 1, 65535, 65535}, 1, "(1,1,65535,65535) is a invalid box \n"},
        {{3, 4, 10, 4}, 2, ""},
        {{3, 4, 10, 4}, 3, "thickness 3 on box(3,4,10,4) is not invalid\n"},
        {{3, 4, 1, 9}, 0, "thickness 1 on box(3,4,1,9) is not invalid\n"},
        {{3, 4, 2, 2}, 0, ""},
    };
    any_canvas drawn;
    for (const auto &[area, thickness, message] : cases) {
        EXPECT_EQ(printed([&, area = area, thickness = thickness] {
                      ssd1327zb_draw_border_on_canvas(drawn.frame, &area, thickness, 100);
                  }),
                  message);
    }
    const box area = {0, 0, 8, 8}, outside = {120, 0, 9, 9};
    canvas no_pixels = {128, 128, 4, nullptr, 8192};
    canvas pixels_alone = {0, 0, 0, drawn.frame->buf, 0};
    const grey_levels before = drawn.levels();
    EXPECT_EQ(printed([&] {
                  for (canvas *frame : {&no_pixels, static_cast<canvas *>(nullptr)}) {
                      EXPECT_EQ(ssd1327zb_draw_border_on_canvas(frame, &area, 1, 100), -1);
                      EXPECT_EQ(ssd1327zb_draw_border_on_canvas(frame, &outside, 1, 100), -1);
                  }
                  EXPECT_EQ(ssd1327zb_draw_border_on_canvas(drawn.frame, nullptr, 1, 100), -1);
                  EXPECT_EQ(ssd1327zb_draw_border_on_canvas(nullptr, &area, 5, 100), -1);
              }),
              "(120,0,9,9) is a invalid box \n(120,0,9,9) is a invalid box \n"
              "thickness 5 on box(0,0,8,8) is not invalid\n");
    EXPECT_EQ(ssd1327zb_draw_border_on_canvas(&pixels_alone, &area, 1, 100), 0);
    EXPECT_TRUE(drawn.levels() == with_border(before, area, 1, 15));
}

} // namespace
