#include "tools/oled_status/status_screen.h"

#include "simulator/in_process/spi_boundary.h"
#include "tests/support/grey.h"
#include "tools/oled_status/texts.h"

#include <gtest/gtest.h>

using namespace renewer;
namespace texts = oled_status::texts;

namespace {

struct oled_status_screen : testing::Test {
    bmpbuf *battery = nullptr;

    void SetUp() override {
        spi().leads_to_oled = true;
        spi().wanted_speed = 30000000;
        ASSERT_EQ(mw_disp_init_module("ssd1327zb", "/dev/null"), 0);
        battery = mw_disp_bmp_to_bmpbuf(BATTERY_BMP);
        ASSERT_NE(battery, nullptr);
    }
    void TearDown() override {
        mw_disp_destory_bmpbuf(&battery);
        mw_disp_uninit_module("ssd1327zb");
    }
};

TEST_F(oled_status_screen, has_room_for_its_texts) {
    EXPECT_LE(oled_status::text_strip(texts::fix).width(), 88);
    EXPECT_LE(oled_status::text_strip(texts::position).width(), 120);
    EXPECT_EQ(oled_status::text_strip(texts::selection).width(), 120) << "the whole bar";
    EXPECT_GT(oled_status::text_strip(texts::news).width(), 128) << "something to scroll";
}

TEST_F(oled_status_screen, scrolls_its_long_line_and_nothing_else) {
    const oled_status::text_strip news(texts::news);
    const auto shown = [&](int32_t scroll) {
        EXPECT_TRUE(oled_status::compose(*battery, news, scroll));
        EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 0);
        return spi().oled.seen_levels();
    };
    const grey_levels first = shown(0);
    const grey_levels later = shown(10);
    for (int i = 0; i < 128 * 128; ++i) {
        const int x = i % 128, y = i / 128;
        const bool in_line = x >= 5 && x < 123 && y >= 102 && y < 118;
        const auto place = static_cast<size_t>(i);
        if (!in_line) {
            ASSERT_EQ(later[place], first[place]) << x << ' ' << y;
        } else if (x < 113) {
            ASSERT_EQ(later[place], first[place + 10]) << x << ' ' << y;
        }
    }
    EXPECT_EQ(spi().oled.faults(), simulator::ssd1327_panel::fault_counts{});
}

TEST_F(oled_status_screen, reports_what_it_cannot_draw) {
    const oled_status::text_strip wrong("Ж");
    EXPECT_FALSE(wrong.is_rendered());
    EXPECT_FALSE(oled_status::compose(*battery, wrong, 0));
    const oled_status::text_strip news(texts::news);
    EXPECT_FALSE(oled_status::compose(*battery, news, -1));
    EXPECT_TRUE(oled_status::compose(*battery, news, 0));
}

} // namespace
