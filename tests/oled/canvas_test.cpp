#include "oled/canvas.h"

#include "tests/support/files.h"
#include "tests/support/grey.h"
#include "tests/support/output.h"
#include "tests/support/pictures.h"
#include "tests/support/spi_boundary.h"

#include <gtest/gtest.h>

using namespace renewer;

namespace {

constexpr const char device[] = "/dev/spidev2.0";
const std::string not_registered = "There was no disp module init\n";
const std::string null_argument = "There is NULL pointer function params input\n";
const std::string registered = "/dev/spidev2.0 have been init\n"
                               "create_ssd1327sd_canvas_handler success\n";

std::string missing(const std::string &operation) {
    return "There was no " + operation + " function registerd\n";
}

// What a call gives and prints.
template <typename call>
std::string said(call make) {
    output_listener printed;
    make();
    return printed.text;
}

struct mw_disp : testing::Test {
    box area = {0, 0, 16, 16};
    uint8_t pixel = 0;
    bmpbuf picture = {1, 1, &pixel};
    std::vector<uint8_t> strip_pixels = std::vector<uint8_t>(256);
    strbuf strip = {16, 16, strip_pixels.data(), 256};
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
        EXPECT_EQ(said([&] { EXPECT_EQ(mw_disp_init_module(name, device), -1); }), "");
    }
    for (const char *name : {"ssd1327zb", "SSD1327ZB", "Ssd1327zB"}) {
        EXPECT_EQ(said([&] { EXPECT_EQ(mw_disp_init_module(name, device), 0); }), registered);
        const canvas_handler *const first = g_canvas_handler;
        EXPECT_EQ(said([&] { EXPECT_EQ(mw_disp_init_module("SSD1327zb", "/dev/none"), -1); }),
                  "SSD1327zb have been init\n");
        EXPECT_EQ(g_canvas_handler, first);
        EXPECT_STREQ(g_canvas_handler->name, name);
        EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_uninit_module("sSD1327zb"), -1); }), "");
        EXPECT_EQ(g_canvas_handler, nullptr);
    }
}

TEST_F(mw_disp, registers_nothing_when_the_module_cannot_be_had) {
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_init_module("ssd1327zb", "/dev/none"), -1); }),
              "spi_oled__open: open /dev/spidev0.0 error!\n"
              "open /dev/none failed\n"
              "/dev/none have been init\n"
              "create_ssd1327sd_canvas_handler failed\n");
    EXPECT_EQ(g_canvas_handler, nullptr);
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_init_module("ssd1327zb", device), 0); }), registered);
}

TEST_F(mw_disp, says_what_it_cannot_release) {
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_uninit_module(nullptr), -1); }),
              "The disp module name that would to be uninit is null\n");
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_uninit_module("ssd1327zb"), -1); }), not_registered);
    mw_disp_init_module("ssd1327ZB", device);
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_uninit_module(nullptr), -1); }),
              "The disp module name that would to be uninit is null\n");
    EXPECT_EQ(said([] { EXPECT_EQ(mw_disp_uninit_module("sa1230"), -1); }),
              "The init module ssd1327ZB is not sa1230\n");
    EXPECT_NE(g_canvas_handler, nullptr);
}

TEST_F(mw_disp, draws_and_shows_what_was_drawn) {
    put_file("/data/picture.bmp", bmp_of(5, 3, random_pixels(5, 3)));
    ASSERT_EQ(mw_disp_init_module("ssd1327zb", device), 0);
    EXPECT_EQ(mw_disp_check_box(&area), 0);
    const box frame = {10, 10, 100, 50};
    EXPECT_EQ(mw_disp_draw_border_on_canvas(&frame, 2, 100), 0);
    EXPECT_EQ(mw_disp_get_strbuf_size("A卫"), 384);
    std::vector<uint8_t> pixels(384);
    strbuf text = {0, 16, pixels.data(), 384};
    EXPECT_EQ(mw_disp_str_to_strbuf("A卫", &text), &text);
    const box line = {20, 20, 50, 16};
    EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(&text, 0, &line, 0), 0);
    loaded = mw_disp_bmp_to_bmpbuf("/data/picture.bmp");
    ASSERT_NE(loaded, nullptr);
    const box place = {91, 21, 5, 3};
    EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(loaded, &place, 1), 0);
    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 0);

    const grey_levels shown = spi().oled.seen_levels();
    EXPECT_TRUE(shown == levels_of(g_canvas_handler->canvas->buf));
    EXPECT_EQ(shown[10 * 128 + 10], 15) << "the border";
    EXPECT_EQ(shown[24 * 128 + 20 + 3], 15) << "the A";
    EXPECT_EQ(shown[21 * 128 + 91], 15 - loaded->buf[0]) << "the picture";
    mw_disp_destory_bmpbuf(&loaded);
    EXPECT_EQ(loaded, nullptr);

    EXPECT_EQ(mw_disp_clean_canvas(), 0);
    EXPECT_TRUE(spi().oled.seen_levels() == shown) << "until the next flush";
    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 0);
    EXPECT_TRUE(spi().oled.seen_levels() == grey_levels{});
    EXPECT_EQ(spi().oled.faults(), simulator::ssd1327_panel::fault_counts{});
}

// Each operation that forwards: the result of a call that is right but for what the table tells.
struct forwarding {
    const char *operation;
    std::string (*result)(mw_disp &with);
    std::string failure;
    std::string without_module;
    std::string without_operation;
};

std::string pointer_text(const void *pointer) {
    return pointer == nullptr ? "null" : "a pointer";
}

const forwarding operations[] = {
    {"flush_canvas_to_disp",
     [](mw_disp &) { return std::to_string(mw_disp_flush_canvas_to_disp()); }, "-1", not_registered,
     missing("flush_canvas_to_disp")},
    {"clean_canvas", [](mw_disp &) { return std::to_string(mw_disp_clean_canvas()); }, "-1",
     not_registered, missing("clean_canvas")},
    {"check_box", [](mw_disp &with) { return std::to_string(mw_disp_check_box(&with.area)); }, "-1",
     "", ""},
    {"bmp_to_bmpbuf", [](mw_disp &) { return pointer_text(mw_disp_bmp_to_bmpbuf("/data/none")); },
     "null", not_registered, missing("bmp_to_bmpbuf")},
    {"draw_bmpbuf_on_canvas",
     [](mw_disp &with) {
         return std::to_string(mw_disp_draw_bmpbuf_on_canvas(&with.picture, &with.area, 0));
     },
     "-1", not_registered, missing("draw_bmpbuf_on_canvas")},
    {"destory_bmpbuf",
     [](mw_disp &with) {
         mw_disp_destory_bmpbuf(&with.loaded);
         return std::string("nothing");
     },
     "nothing", not_registered, missing("destory_bmpbuf")},
    {"draw_border_on_canvas",
     [](mw_disp &with) { return std::to_string(mw_disp_draw_border_on_canvas(&with.area, 1, 50)); },
     "-1", "", ""},
    {"get_strbuf_size", [](mw_disp &) { return std::to_string(mw_disp_get_strbuf_size("A")); },
     "-1", "", ""},
    {"str_to_strbuf",
     [](mw_disp &with) { return pointer_text(mw_disp_str_to_strbuf("A", &with.strip)); }, "null",
     "", ""},
    {"draw_strbuf_on_canvas",
     [](mw_disp &with) {
         return std::to_string(mw_disp_draw_strbuf_on_canvas(&with.strip, 0, &with.area, 0));
     },
     "-1", "", ""},
};

TEST_F(mw_disp, needs_a_module_and_its_operation) {
    const auto expect = [this](const std::string forwarding::*message, const char *when) {
        for (const forwarding &one : operations) {
            std::string result;
            EXPECT_EQ(said([&] { result = one.result(*this); }), one.*message)
                << one.operation << when;
            EXPECT_EQ(result, one.failure) << one.operation << when;
        }
    };
    expect(&forwarding::without_module, " before the registration");
    mw_disp_init_module("ssd1327zb", device);
    const canvas_handler complete = *g_canvas_handler;
    canvas_handler without_operations{};
    without_operations.canvas = complete.canvas;
    *g_canvas_handler = without_operations;
    expect(&forwarding::without_operation, " without operations");
    *g_canvas_handler = complete;
    mw_disp_uninit_module("ssd1327zb");
    expect(&forwarding::without_module, " after the release");
}

TEST_F(mw_disp, looks_at_the_arguments_first) {
    const bmpbuf without_pixels = {1, 1, nullptr};
    for (const bool with_module : {false, true}) {
        if (with_module) {
            mw_disp_init_module("ssd1327zb", device);
        }
        for (const bmpbuf *wrong : {&without_pixels, static_cast<const bmpbuf *>(nullptr)}) {
            EXPECT_EQ(said([&] { EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(wrong, &area, 0), -1); }),
                      null_argument);
        }
        EXPECT_EQ(said([&] { EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(&picture, nullptr, 0), -1); }),
                  null_argument);
        EXPECT_EQ(said([] { mw_disp_destory_bmpbuf(nullptr); }), null_argument);
        EXPECT_EQ(said([&] {
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

// Operations of a module of the test's own, which tell what they were given.
std::string given;

void take(const char *operation, auto... arguments) {
    given = operation;
    ((given += " " + std::to_string(arguments)), ...);
}

TEST_F(mw_disp, forwards_its_arguments_and_the_result) {
    mw_disp_init_module("ssd1327zb", device);
    canvas_handler &module = *g_canvas_handler;
    const canvas_handler complete = module;
    static const canvas *frame;
    frame = module.canvas;
    module.flush_canvas_to_disp = [](int32_t fd, const uint8_t *bytes, uint32_t count) {
        take("flush", fd == g_canvas_handler->fd, bytes == frame->buf, count);
        return 41;
    };
    module.clean_canvas = [](canvas *on) {
        take("clean", on == frame);
        return 42;
    };
    module.check_box = [](const box *where) {
        take("check", where->x);
        return 43;
    };
    module.draw_border_on_canvas = [](canvas *on, const box *where, uint8_t thickness,
                                      uint8_t percentage) {
        take("border", on == frame, where->x, thickness, percentage);
        return 44;
    };
    module.draw_bmpbuf_on_canvas = [](const bmpbuf *from, canvas *on, const box *where,
                                      uint32_t flags) {
        take("picture", from->width, on == frame, where->x, flags);
        return 45;
    };
    module.draw_strbuf_on_canvas = [](const strbuf *from, int32_t start, canvas *on,
                                      const box *where, uint32_t flags) {
        take("strip", from->width, start, on == frame, where->x, flags);
        return 46;
    };
    area.x = 7;
    EXPECT_EQ(mw_disp_flush_canvas_to_disp(), 41);
    EXPECT_EQ(given, "flush 1 1 8192");
    EXPECT_EQ(mw_disp_clean_canvas(), 42);
    EXPECT_EQ(given, "clean 1");
    EXPECT_EQ(mw_disp_check_box(&area), 43);
    EXPECT_EQ(given, "check 7");
    EXPECT_EQ(mw_disp_draw_border_on_canvas(&area, 200, 255), 44);
    EXPECT_EQ(given, "border 1 7 200 255");
    EXPECT_EQ(mw_disp_draw_bmpbuf_on_canvas(&picture, &area, 0x80000001), 45);
    EXPECT_EQ(given, "picture 1 1 7 2147483649");
    EXPECT_EQ(mw_disp_draw_strbuf_on_canvas(&strip, -5, &area, 3), 46);
    EXPECT_EQ(given, "strip 16 -5 1 7 3");
    module = complete;
}

} // namespace
