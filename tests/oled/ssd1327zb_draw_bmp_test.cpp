#include "oled/ssd1327zb_draw_bmp.h"

#include "tests/support/grey.h"
#include "tests/support/output.h"
#include "tests/support/pictures.h"
#include "tests/support/scarce_memory.h"

#include <gtest/gtest.h>

using namespace renewer;

namespace {

constexpr const char path[] = "/data/battery.bmp";
const std::string path_line = "/data/battery.bmp\n";

// The level of each pixel of red, green and blue.
std::vector<uint8_t> grey_of(const std::string &pixels) {
    std::vector<uint8_t> levels;
    for (size_t i = 0; i < pixels.size(); i += 3) {
        const auto part = [&](size_t at) { return static_cast<uint8_t>(pixels[i + at]); };
        levels.push_back(static_cast<uint8_t>((part(0) + part(1) + part(2)) / 48));
    }
    return levels;
}

std::vector<uint8_t> levels_of(const bmpbuf &picture) {
    return {picture.buf, picture.buf + picture.width * picture.height};
}

bmpbuf *load(const std::string &file, std::string &printed_text) {
    put_file(path, file);
    output_listener printed;
    bmpbuf *const picture = ssd1327zb_bmp_to_bmpbuf(path);
    printed_text = printed.text;
    return picture;
}

// A picture of random levels for the life of the test.
struct random_picture {
    bmpbuf *content = nullptr;

    random_picture(int width, int height) {
        std::string printed;
        content = load(bmp_of(width, height, random_pixels(width, height)), printed);
    }
    random_picture(const random_picture &) = delete;
    random_picture &operator=(const random_picture &) = delete;
    ~random_picture() { ssd1327zb_destory_bmpbuf(&content); }
};

TEST(ssd1327zb_draw_bmp, loads_pictures_that_another_program_wrote) {
    for (const auto &[width, height] : {std::pair(1, 1), {2, 3}, {3, 5}, {4, 4}, {200, 150}}) {
        const std::string pixels = random_pixels(width, height);
        std::string printed;
        bmpbuf *picture = load(bmp_of(width, height, pixels), printed);
        ASSERT_NE(picture, nullptr) << width;
        EXPECT_EQ(printed, path_line);
        EXPECT_EQ(picture->width, width);
        EXPECT_EQ(picture->height, height);
        EXPECT_TRUE(levels_of(*picture) == grey_of(pixels)) << width;
        ssd1327zb_destory_bmpbuf(&picture);
        EXPECT_EQ(picture, nullptr);
        ssd1327zb_destory_bmpbuf(&picture);
    }
    ssd1327zb_destory_bmpbuf(nullptr);
}

TEST(ssd1327zb_draw_bmp, turns_colours_into_levels) {
    const struct {
        const char *rgb;
        int level;
    } cases[] = {{"\0\0\0", 0},   {"\x2F\0\0", 0},      {"\x30\0\0", 1},      {"\x10\x10\x10", 1},
                 {"\0\xFF\0", 5}, {"\xFF\xFF\xFF", 15}, {"\xFF\xFF\xD1", 14}, {"\xFF\xFF\xD2", 15}};
    for (const auto &[rgb, level] : cases) {
        std::string printed;
        bmpbuf *picture = load(bmp_of(1, 1, std::string(rgb, 3)), printed);
        ASSERT_NE(picture, nullptr);
        EXPECT_EQ(picture->buf[0], level);
        ssd1327zb_destory_bmpbuf(&picture);
    }
}

TEST(ssd1327zb_draw_bmp, refuses_what_is_no_picture_and_takes_no_memory_for_it) {
    const struct {
        const char *what;
        std::string file;
    } cases[] = {
        {"empty", ""},
        {"one byte short of its headers", bmp{}.bytes().substr(0, 53)},
        {"one byte short of its pixels", bmp{}.bytes().substr(0, 54 + 23)},
        {"other signature", bmp{.signature = "MB"}.bytes()},
        {"8 bits", bmp{.bits = 8}.bytes()},
        {"23 bits", bmp{.bits = 23}.bytes()},
        {"32 bits", bmp{.bits = 32}.bytes()},
        {"65535 bits", bmp{.bits = 65535}.bytes()},
        {"top row first", bmp{.height = -2}.bytes()},
        {"negative width", bmp{.width = -4}.bytes()},
        {"most negative", bmp{.width = INT_MIN, .height = INT_MIN}.bytes()},
        {"no width", bmp{.width = 0}.bytes()},
        {"no height", bmp{.height = 0}.bytes()},
        {"more than 16 bits of width",
         bmp{.width = 65536, .height = 1, .pixel_bytes = 196608}.bytes()},
        {"more than 16 bits of height",
         bmp{.width = 1, .height = 65536, .pixel_bytes = 262144}.bytes()},
        {"a GiB of pixels that are not there", bmp{.width = 20000, .height = 20000}.bytes()},
        {"size beyond 32 bits", bmp{.width = 65535, .height = 65535, .bits = 65528}.bytes()},
    };
    for (const auto &[what, file] : cases) {
        std::string printed;
        largest_allocation = 0;
        EXPECT_EQ(load(file, printed), nullptr) << what;
        EXPECT_LE(largest_allocation, file.size() + 16384) << what; // and what streams take
        EXPECT_EQ(printed, path_line) << what;
    }
    std::string printed;
    bmpbuf *picture = load(bmp{}.bytes(), printed);
    ASSERT_NE(picture, nullptr) << "the control";
    EXPECT_EQ(levels_of(*picture), (std::vector<uint8_t>{4, 4, 4, 4, 3, 3, 3, 4}));
    ssd1327zb_destory_bmpbuf(&picture);
    picture = load(bmp{.width = 65535, .height = 1, .pixel_bytes = 196608}.bytes(), printed);
    ASSERT_NE(picture, nullptr) << "as wide as can be";
    EXPECT_EQ(picture->width, 65535);
    ssd1327zb_destory_bmpbuf(&picture);
}

TEST(ssd1327zb_draw_bmp, says_what_cannot_be_opened_or_is_no_file) {
    output_listener printed;
    EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf("/data/none.bmp"), nullptr);
    EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf(nullptr), nullptr);
    EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf("/data"), nullptr);
    EXPECT_EQ(printed.text, "open /data/none.bmp failed\nopen (null) failed\n/data\n");
}

TEST(ssd1327zb_draw_bmp, leaves_nothing_allocated_when_memory_runs_out) {
    for (int allocations = 0; allocations < 3; ++allocations) {
        put_file(path, bmp{}.bytes());
        output_listener printed;
        allocations_left = allocations;
        EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf(path), nullptr) << allocations;
        allocations_left = INT_MAX;
        EXPECT_EQ(printed.text, path_line);
    }
}

TEST(ssd1327zb_draw_bmp, draws_into_any_box_and_nothing_else) {
    any_canvas drawn;
    const random_picture picture(37, 33);
    int done = 0, refused = 0;
    for (int turn = 0; turn < 2000; ++turn) {
        const box area = thrown_box();
        const auto flags = static_cast<uint32_t>(thrown(0, 3));
        const bool fits = lies_on_panel(area) && area.width <= 37 && area.height <= 33;
        grey_levels expected = drawn.levels();
        for (int i = 0; fits && i < area.width * area.height; ++i) {
            const int level = picture.content->buf[i];
            expected[static_cast<size_t>((area.y + i / area.width) * 128 + area.x +
                                         i % area.width)] =
                static_cast<uint8_t>(flags % 2 == 1 ? 15 - level : level);
        }
        ++(fits ? done : refused);
        ASSERT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, drawn.frame, &area, flags),
                  fits ? 0 : -1);
        ASSERT_TRUE(drawn.levels() == expected)
            << area.x << ' ' << area.y << ' ' << area.width << ' ' << area.height;
    }
    EXPECT_GT(done, 200);
    EXPECT_GT(refused, 200);
}

TEST(ssd1327zb_draw_bmp, needs_a_picture_a_whole_canvas_and_a_box_of_at_most_its_size) {
    const random_picture picture(8, 8);
    any_canvas drawn;
    const grey_levels before = drawn.levels();
    const box area = {0, 0, 8, 8}, wider = {0, 0, 9, 1}, higher = {0, 0, 1, 9};
    const bmpbuf without_pixels = {8, 8, nullptr};
    canvas small = {128, 128, 4, drawn.frame->buf, 8191};
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, drawn.frame, &wider, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, drawn.frame, &higher, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, drawn.frame, nullptr, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, &small, &area, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, nullptr, &area, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(&without_pixels, drawn.frame, &area, 0), -1);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(nullptr, drawn.frame, &area, 0), -1);
    EXPECT_TRUE(drawn.levels() == before);
    EXPECT_EQ(ssd1327zb_draw_bmpbuf_on_canvas(picture.content, drawn.frame, &area, 0), 0);
    EXPECT_FALSE(drawn.levels() == before) << "the control";
}

} // namespace
