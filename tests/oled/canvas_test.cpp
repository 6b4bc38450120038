#include "oled/canvas.h"

#include "oled/ssd1327zb_draw_border.h"
#include "simulator/in_process/spi_boundary.h"
#include "tests/support/files.h"
#include "tests/support/grey.h"
#include "tests/support/pictures.h"
#include "tests/support/printed.h"

using namespace renewer;

namespace {

constexpr const char device[] = "/dev/spidev2.0";
const std::string not_registered = "There was no disp module init\n";
const std::string null_argument = "There is NULL pointer function params input\n";
const std::string registered = "/dev/spidev2.0 have been init\n"
                               "create_ssd1327sd_canvas_handler success\n";

struct mw_disp : testing::Test {
    box area = {0, 0, 16, 16};
    uint8_t pixel = 0;
    bmpbuf picture = {1, 1, &pixel};
    std::vector<uint8_t> strip_pixels = std::vector<uint8_t>(384);
    strbuf strip = {24, 16, strip_pixels.data(), 384};
    bmpbuf *loaded = nullptr;

    void SetUp() override {
        spi().leads_to_oled = true;
        spi().wanted_speed = 30000000;
        put_file(device, "");
    }
    void TearDown() override { destory_ssd1327sd_canvas_handler(&g_canvas_handler); }
};

TEST_F(mw_disp, registers_one_module_by_its_name_in_any_case) {
    for (const char *name :
         {"ssd1327", "ssd1327zbx", "sa1230", "", static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(printed([&] { EXPECT_EQ(mw_disp_init_module(name, device), -1); }), "");
    }
    EXPECT_EQ(printed([] { EXPECT_EQ(mw_disp_init_module("ssd1327zb", "/dev/none"), -1); }),
              "spi_oled__open: open /dev/spidev0.0 error!\n"
              "open /dev/none failed\n"
              "/dev/none have been init\n"
              "create_ssd1327sd_canvas_handler failed\n");
    EXPECT_EQ(g_canvas_handler, nullptr);
    for (const char *name : {"ssd1327zb", "Ssd1327ZB"}) {
        EXPECT_EQ(printed([&] { EXPECT_EQ(mw_disp_init_module(name, device), 0); }), registered);
        const canvas_handler *const first = g_canvas_handler;
        EXPECT_EQ(printed([] { EXPECT_EQ(mw_disp_init_module("SSD1327zb", "/dev/none"), -1); }),
                  "SSD1327zb have been init\n");
        EXPECT_EQ(g_canvas_handler, first);
        EXPECT_STREQ(g_canvas_handler->name, name);
        EXPECT_EQ(printed([] { EXPECT_EQ(mw_disp_uninit_module("sSD1327zb"), -1); }), "");
        EXPECT_EQ(g_canvas_handler, nullptr);
    }
}

TEST_F(mw_disp, says_what_it_cannot_release) {
    const std::string without_name = "The disp module name that would to be uninit is null\n";
    EXPECT_EQ(printed([] { mw_disp_uninit_module(nullptr); }), without_name);
    EXPECT_EQ(printed([] { mw_disp_uninit_module("ssd1327zb"); }), not_registered);
    mw_disp_init_module("ssd1327ZB", device);
    EXPECT_EQ(printed([] { mw_disp_uninit_module(nullptr); }), without_name);
    EXPECT_EQ(printed([] { mw_disp_uninit_module("sa1230"); }),
              "The init module ssd1327ZB is not sa1230\n");
    EXPECT_NE(g_canvas_handler, nullptr);
}

// Each operation draws and returns the same as the module's own with the same arguments.
TEST_F(mw_disp, draws_and_shows_what_the_module_draws) {
    put_file("/data/picture.bmp", bmp_of(5, 3, random_pixels(5, 3)));
    ASSERT_EQ(mw_disp_init_module("ssd1327zb", device), 0);
    any_canvas direct;
    ssd1327zb_clean_canvas(direct.frame);
    const box outside = {120, 10, 100, 50}, frame = {10, 10, 100, 50}, line = {20, 20, 15, 16},
              place = {91, 21, 5, 3};
    EXPECT_EQ(mw_disp_check_box(&frame), 0);
    EXPECT_EQ(mw_disp_check_box(&outside), -1);
    EXPECT_EQ(mw_disp_draw_border_on_canvas(&outside, 2, 60), -1);
    EXPECT_EQ(mw_disp_draw_border_on_canvas(&frame, 2, 60), 0);
    ssd1327zb_draw_border_on_canvas(direct.frame, &frame, 2, 60);
    EXPECT_EQ(mw_disp_get_strbuf_size("A卫"), 384);
    EXPECT_EQ(mw_disp_str_to_strbuf("A卫", &strip), &strip);
    EXPECT_EQ(mw_disp_str_to_strbuf("AB卫", &strip), nullptr);
    EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(&strip, 4, &outside, 1), -1);
    EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(&strip, 4, &line, 1), 0);
    ssd1327zb_draw_strbuf_on_canvas(&strip, 4, direct.frame, &line, 1);
    loaded = mw_disp_bmp_to_bmpbuf("/data/picture.bmp");
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(loaded, &outside, 1), -1);
    EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(loaded, &place, 1), 0);
    ssd1327zb_draw_bmpbuf_on_canvas(loaded, direct.frame, &place, 1);
    mw_disp_destory_bmpbuf(&loaded);
    EXPECT_EQ(loaded, nullptr);

    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 0);
    EXPECT_TRUE(spi().oled.seen_levels() == direct.levels());
    EXPECT_EQ(mw_disp_clean_canvas(), 0);
    EXPECT_TRUE(spi().oled.seen_levels() == direct.levels()) << "until the next flush";
    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 0);
    EXPECT_TRUE(spi().oled.seen_levels() == grey_levels{});
    EXPECT_EQ(spi().oled.faults(), simulator::ssd1327_panel::fault_counts{});

    g_canvas_handler->canvas->buf = (free(g_canvas_handler->canvas->buf), nullptr);
    EXPECT_EQ(mw_disp_clean_canvas(), -1);
    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), -1);
}

TEST_F(mw_disp, needs_a_module_and_its_operation) {
    const auto expect_failures = [this](bool with_module) {
        const auto fails = [&](const char *operation, bool prints, auto fails_itself) {
            const std::string missing =
                std::string("There was no ") + operation + " function registerd\n";
            EXPECT_EQ(printed([&] { EXPECT_TRUE(fails_itself()) << operation; }),
                      prints ? with_module ? missing : not_registered : "");
        };
        fails("flush_canvas_to_disp", true, [] { return mw_disp_flush_canvas_to_disp() == -1; });
        fails("clean_canvas", true, [] { return mw_disp_clean_canvas() == -1; });
        fails("check_box", false, [&] { return mw_disp_check_box(&area) == -1; });
        fails("bmp_to_bmpbuf", true, [] { return mw_disp_bmp_to_bmpbuf("/data/none") == nullptr; });
        fails("draw_bmpbuf_on_canvas", true,
              [&] { return mw_disp_draw_bmpbuf_on_canvas(&picture, &area, 0) == -1; });
        fails("destory_bmpbuf", true, [&] { return mw_disp_destory_bmpbuf(&loaded), true; });
        fails("draw_border", false,
              [&] { return mw_disp_draw_border_on_canvas(&area, 1, 5) == -1; });
        fails("get_strbuf_size", false, [] { return mw_disp_get_strbuf_size("A") == -1; });
        fails("str_to_strbuf", false,
              [&] { return mw_disp_str_to_strbuf("A", &strip) == nullptr; });
        fails("draw_strbuf_on_canvas", false,
              [&] { return mw_disp_draw_strbuf_on_canvas(&strip, 0, &area, 0) == -1; });
    };
    expect_failures(false);
    mw_disp_init_module("ssd1327zb", device);
    const canvas_handler complete = *g_canvas_handler;
    canvas_handler without_operations{};
    without_operations.canvas = complete.canvas;
    *g_canvas_handler = without_operations;
    expect_failures(true);
    *g_canvas_handler = complete;
    mw_disp_uninit_module("ssd1327zb");
    expect_failures(false);
}

TEST_F(mw_disp, checks_its_arguments_first) {
    const bmpbuf without_pixels = {1, 1, nullptr};
    for (const bool with_module : {false, true}) {
        if (with_module) {
            mw_disp_init_module("ssd1327zb", device);
        }
        for (const bmpbuf *from : {&without_pixels, static_cast<const bmpbuf *>(nullptr),
                                   static_cast<const bmpbuf *>(&picture)}) {
            const box *const where = from == &picture ? nullptr : &area;
            EXPECT_EQ(
                printed([&] { EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(from, where, 0), -1); }),
                null_argument);
        }
        EXPECT_EQ(printed([] { mw_disp_destory_bmpbuf(nullptr); }), null_argument);
        EXPECT_EQ(printed([&] {
                      EXPECT_EQ(mw_disp_check_box(nullptr), -1);
                      EXPECT_EQ(mw_disp_draw_border_on_canvas(nullptr, 1, 50), -1);
                      EXPECT_EQ(mw_disp_get_strbuf_size(nullptr), -1);
                      EXPECT_EQ(mw_disp_str_to_strbuf(nullptr, &strip), nullptr);
                      EXPECT_EQ(mw_disp_str_to_strbuf("A", nullptr), nullptr);
                      EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(nullptr, 0, &area, 0), -1);
                      EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(&strip, 0, nullptr, 0), -1);
                  }),
                  "");
    }
}

} // namespace
