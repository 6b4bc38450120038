#include "oled/ssd1327zb_draw_bmp.h"

#include "tests/support/grey.h"
#include "tests/support/pictures.h"
#include "tests/support/printed.h"
#include "tests/support/scarce_memory.h"

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

// The picture of a file, loaded while so many allocations succeed; released with the test.
struct loaded {
    bmpbuf *content = nullptr;

    explicit loaded(const std::string &file, int allocations = INT_MAX) {
        put_file(path, file);
        EXPECT_EQ(printed([&] {
                      largest_allocation = 0;
                      allocations_left = allocations;
                      content = ssd1327zb_bmp_to_bmpbuf(path);
                      allocations_left = INT_MAX;
                  }),
                  path_line);
    }
    loaded(const loaded &) = delete;
    loaded &operator=(const loaded &) = delete;
    ~loaded() {
        ssd1327zb_destory_bmpbuf(&content);
        EXPECT_EQ(content, nullptr);
        ssd1327zb_destory_bmpbuf(&content);
    }
};

TEST(ssd1327zb_draw_bmp, loads_pictures_that_another_program_wrote) {
    const std::string colours("\0\0\0\x2F\0\0\x30\0\0\0\xFF\0\xFF\xFF\xFF\xFF\xFF\xD1", 18);
    for (const auto &[width, height] : {std::pair(6, 1), {2, 3}, {3, 5}, {4, 4}, {200, 150}}) {
        const std::string pixels = width == 6 ? colours : random_pixels(width, height);
        const loaded picture(bmp_of(width, height, pixels));
        ASSERT_NE(picture.content, nullptr) << width;
        EXPECT_EQ(picture.content->width, width);
        EXPECT_EQ(picture.content->height, height);
        EXPECT_TRUE(levels_of(*picture.content) == grey_of(pixels)) << width;
    }
    ssd1327zb_destory_bmpbuf(nullptr);
}

TEST(ssd1327zb_draw_bmp, refuses_what_is_no_picture_and_takes_no_memory_for_it) {
    const bmp refused[] = {
        {.signature = "MB"},
        {.bits = 23},
        {.bits = 32},
        {.height = -2},
        {.width = -4},
        {.width = INT_MIN, .height = INT_MIN},
        {.width = 0},
        {.height = 0},
        {.width = 65536, .height = 1, .pixel_bytes = 196608},
        {.width = 1, .height = 65536, .pixel_bytes = 262144},
        {.width = 20000, .height = 20000},
        {.width = 65535, .height = 65535, .bits = 65528},
        {.pixel_bytes = 23},
        {.width = 3, .pixel_bytes = 20}, // more than the last row's padding is missing
    };
    for (const bmp &file : refused) {
        EXPECT_EQ(loaded(file.bytes()).content, nullptr) << &file - refused;
        EXPECT_LE(largest_allocation, file.pixel_bytes + 16384) << "and what streams take";
    }
    EXPECT_EQ(loaded(bmp{}.first(53)).content, nullptr);
    const loaded control(bmp{}.bytes());
    ASSERT_NE(control.content, nullptr);
    EXPECT_EQ(levels_of(*control.content), (std::vector<uint8_t>{4, 4, 4, 4, 3, 3, 3, 4}));
    EXPECT_NE(loaded(bmp{.width = 3, .pixel_bytes = 21}.bytes()).content, nullptr);
    const loaded widest(bmp{.width = 65535, .height = 1, .pixel_bytes = 196608}.bytes());
    ASSERT_NE(widest.content, nullptr);
    EXPECT_EQ(widest.content->width, 65535);
    for (int allocations = 0; allocations < 3; ++allocations) {
        EXPECT_EQ(loaded(bmp{}.bytes(), allocations).content, nullptr);
    }
    EXPECT_EQ(printed([] {
                  EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf("/data/none.bmp"), nullptr);
                  EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf(nullptr), nullptr);
                  EXPECT_EQ(ssd1327zb_bmp_to_bmpbuf("/data"), nullptr);
              }),
              "open /data/none.bmp failed\nopen (null) failed\n/data\n");
}

TEST(ssd1327zb_draw_bmp, draws_into_any_box_and_nothing_else) {
    any_canvas drawn;
    const loaded picture(bmp_of(37, 33, random_pixels(37, 33)));
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
    EXPECT_GT(std::min(done, refused), 200);
}

TEST(ssd1327zb_draw_bmp, needs_a_picture_a_box_and_pixels) {
    const loaded picture(bmp{}.bytes());
    any_canvas drawn;
    const grey_levels before = drawn.levels();
    const box area = {0, 0, 4, 2};
    const bmpbuf without_pixels = {8, 8, nullptr};
    canvas no_pixels = {128, 128, 4, nullptr, 8192};
    canvas pixels_alone = {0, 0, 0, drawn.frame->buf, 0};
    const auto draw = ssd1327zb_draw_bmpbuf_on_canvas;
    EXPECT_EQ(draw(picture.content, drawn.frame, nullptr, 0), -1);
    EXPECT_EQ(draw(picture.content, &no_pixels, &area, 0), -1);
    EXPECT_EQ(draw(picture.content, nullptr, &area, 0), -1);
    EXPECT_EQ(draw(&without_pixels, drawn.frame, &area, 0), -1);
    EXPECT_EQ(draw(nullptr, drawn.frame, &area, 0), -1);
    EXPECT_TRUE(drawn.levels() == before);
    EXPECT_EQ(draw(picture.content, &pixels_alone, &area, 0), 0);
    EXPECT_FALSE(drawn.levels() == before);
}

} // namespace
