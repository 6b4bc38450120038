#include "bmp/mw_bmp.h"

#include "tests/support/files.h"
#include "tests/support/output.h"
#include "tests/support/pictures.h"
#include "tests/support/scarce_memory.h"

#include <gtest/gtest.h>

using namespace renewer;

namespace {

constexpr const char path[] = "/reserve/update/confirm.bmp";

std::string as_text(const owned_memory<uint8_t> &pixels, size_t size) {
    return pixels == nullptr ? "none" : std::string(pixels.get(), pixels.get() + size);
}

struct load_result {
    owned_memory<uint8_t> pixels;
    std::string output;
};

// Loads the picture with room for so many allocations. What is printed goes to a file meanwhile, so
// that nothing but the loader allocates.
load_result load_with(int allocations) {
    int width = 0;
    int height = 0;
    testing::internal::CaptureStdout();
    largest_allocation = 0;
    allocations_left = allocations;
    load_result result = {read_bmp_rgb565(path, &width, &height), ""};
    allocations_left = INT_MAX;
    const size_t largest = largest_allocation;
    result.output = testing::internal::GetCapturedStdout();
    largest_allocation = largest;
    return result;
}

struct refusal {
    const char *what;
    std::string file;
    std::string output;
};

const std::string bad_head = "bmp head err\nread bmp err\n";
const std::string no_memory = "malloc err\nread bmp err\n";

const refusal refusals[] = {
    {"empty", "", bad_head},
    {"one byte", "B", bad_head},
    {"first header alone", bmp{}.first(14), bad_head},
    {"one byte short of its headers", bmp{}.first(53), bad_head},
    {"headers alone", bmp{}.first(54), bad_head},
    {"one byte short of its pixels", bmp{}.first(54 + 23), bad_head},
    {"other signature", "MB" + bmp{}.bytes().substr(2), bad_head},
    {"pixels said to start a byte later", bmp{.offset = 55}.bytes(), bad_head},
    {"pixels beyond the file", bmp{.offset = 79}.bytes(), bad_head},
    {"pixels at 4 GiB", bmp{.offset = UINT_MAX}.bytes(), bad_head},
    {"palette", bmp{.bits = 8}.bytes(), "bmp bit count err\nread bmp err\n"},
    {"23 bits", bmp{.bits = 23}.bytes(), "bmp bit count err\nread bmp err\n"},
    {"32 bits", bmp{.bits = 32, .pixel_bytes = 32}.bytes(), "bit count is 4\n"},
    {"48 bits", bmp{.bits = 48, .pixel_bytes = 48}.bytes(), "bit count is 6\n"},
    {"65535 bits", bmp{.bits = 65535}.bytes(), bad_head},
    {"no width", bmp{.width = 0}.bytes(), bad_head},
    {"no height", bmp{.height = 0}.bytes(), bad_head},
    {"a row more than there is", bmp{.height = 3}.bytes(), bad_head},
    {"top row first", bmp{.height = -2}.bytes(), no_memory},
    {"negative width", bmp{.width = -4}.bytes(), no_memory},
    {"negative both", bmp{.width = -4, .height = -2}.bytes(), no_memory},
    {"most negative", bmp{.width = INT_MIN, .height = INT_MIN}.bytes(), no_memory},
    {"row beyond an int", bmp{.width = 0x30000000, .height = 1}.bytes(), bad_head},
    {"row that an int would count as 4", bmp{.width = 0x55555557, .height = 1}.bytes(), bad_head},
    {"size beyond 64 bits", bmp{.width = INT_MAX, .height = INT_MAX, .bits = 65528}.bytes(),
     bad_head},
};

TEST(mw_bmp, refuses_what_is_no_picture_and_takes_no_memory_for_it) {
    const size_t descriptors = open_descriptors();
    for (const auto &[what, file, output] : refusals) {
        put_file(path, file);
        const load_result loaded = load_with(INT_MAX);
        EXPECT_LE(largest_allocation, 48u) << what;
        EXPECT_EQ(loaded.pixels, nullptr) << what;
        EXPECT_EQ(loaded.output, output) << what;
    }
    EXPECT_EQ(open_descriptors(), descriptors);
    put_file(path, bmp{}.bytes());
    EXPECT_NE(load_with(INT_MAX).pixels, nullptr) << "the control";
}

#if __SIZEOF_LONG__ == 8 // no file of a 32-bit system holds as much
TEST(mw_bmp, refuses_a_picture_beyond_an_int_though_the_file_holds_it) {
    put_file(path, bmp{.width = 40000, .height = 20000}.first(54));
    std::filesystem::resize_file(path, 54 + 40000ull * 20000 * 3);
    const load_result loaded = load_with(INT_MAX);
    EXPECT_EQ(loaded.pixels, nullptr);
    EXPECT_EQ(loaded.output, no_memory);
}
#endif

TEST(mw_bmp, says_what_cannot_be_opened_or_is_not_given) {
    int size = 0;
    output_listener printed;
    EXPECT_EQ(read_bmp_rgb565("/reserve/update/none.bmp", &size, &size), nullptr);
    EXPECT_EQ(read_bmp_rgb565(nullptr, &size, &size), nullptr);
    EXPECT_EQ(read_bmp_rgb565(path, nullptr, &size), nullptr);
    EXPECT_EQ(read_bmp_rgb565(path, &size, nullptr), nullptr);
    EXPECT_EQ(printed.text, "open /reserve/update/none.bmp failed\nread bmp err\n"
                            "input point is null\ninput point is null\ninput point is null\n");
}

TEST(mw_bmp, needs_memory_for_the_stored_rows_alone) {
    for (const int width : {3, 4}) {
        put_file(path, bmp{.width = width}.bytes());
        const load_result refused = load_with(0);
        EXPECT_EQ(refused.pixels, nullptr);
        EXPECT_EQ(refused.output, no_memory);
        EXPECT_NE(load_with(1).pixels, nullptr);
        EXPECT_EQ(largest_allocation, 24u);
    }
}

TEST(mw_bmp, steps_say_that_memory_ran_out) {
    const uint8_t pixel[4] = {};
    testing::internal::CaptureStdout();
    allocations_left = 0;
    const bool refused = bmp_to_buff(pixel, 1, 1, 3) == nullptr &&
                         rgb888_to_rgb565(pixel, 1, 1) == nullptr &&
                         bmp_bottom_to_top(pixel, 1, 1, 2) == nullptr;
    allocations_left = INT_MAX;
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "malloc err\nmalloc err\nmalloc err\n");
    EXPECT_TRUE(refused);
}

TEST(mw_bmp, gives_the_stored_rows_and_their_sizes) {
    put_file(path, bmp{.width = 3}.bytes());
    int width = 0;
    int height = 0;
    int bytes_per_pixel = 0;
    const auto rows = read_bmp(path, &width, &height, &bytes_per_pixel);
    EXPECT_EQ(as_text(rows, 24), bmp{}.bytes().substr(54)) << "padding included";
    EXPECT_EQ(std::tuple(width, height, bytes_per_pixel), std::tuple(3, 2, 3));

    put_file(path, bmp{.width = 70000, .height = -5, .bits = 32}.bytes());
    EXPECT_EQ(read_bmp(path, &width, &height, &bytes_per_pixel), nullptr);
    EXPECT_EQ(std::tuple(width, height, bytes_per_pixel), std::tuple(70000, -5, 4));

    put_file(path, bmp{.width = 9, .bits = 16}.bytes());
    EXPECT_EQ(read_bmp(path, &width, &height, &bytes_per_pixel), nullptr);
    EXPECT_EQ(std::tuple(width, height, bytes_per_pixel), std::tuple(70000, -5, 4));
}

TEST(mw_bmp, rearranges_rows) {
    const std::string stored = "abcdef..ghijkl..mnopqr..";
    const auto in = reinterpret_cast<const uint8_t *>(stored.data());
    EXPECT_EQ(as_text(bmp_to_buff(in, 2, 3, 3), 18), "abcdefghijklmnopqr");
    EXPECT_EQ(as_text(bmp_to_buff(in, 2, 3, 4), 24), stored) << "nothing to strip";
    EXPECT_EQ(as_text(bmp_bottom_to_top(in, 2, 3, 4), 24), "mnopqr..ghijkl..abcdef..");
    EXPECT_EQ(as_text(bmp_bottom_to_top(in, 3, 4, 2), 24), "opqr..kl..mn..ghijabcdef");
}

TEST(mw_bmp, steps_refuse_missing_rows_and_sizes_beyond_an_int) {
    const uint8_t pixel[4] = {};
    output_listener printed;
    EXPECT_EQ(bmp_to_buff(nullptr, 1, 1, 3), nullptr);
    EXPECT_EQ(rgb888_to_rgb565(nullptr, 1, 1), nullptr);
    EXPECT_EQ(bmp_bottom_to_top(nullptr, 1, 1, 2), nullptr);
    EXPECT_EQ(printed.text, "in is null\nin is null\nin is null\n");
    for (const auto &[width, height] : {std::pair(INT_MAX, INT_MAX),
                                        {0x10000, 0x10000},
                                        {-1, 1},
                                        {1, -1},
                                        {INT_MIN, INT_MIN},
                                        {0, 1}}) {
        printed.text.clear();
        EXPECT_EQ(bmp_to_buff(pixel, width, height, INT_MAX), nullptr);
        EXPECT_EQ(rgb888_to_rgb565(pixel, width, height), nullptr);
        EXPECT_EQ(bmp_bottom_to_top(pixel, width, height, 2), nullptr);
        EXPECT_EQ(printed.text, "malloc err\nmalloc err\nmalloc err\n") << width << " " << height;
    }
}

TEST(mw_bmp, keeps_the_upper_bits_of_each_colour) {
    const struct {
        std::string blue_green_red;
        std::string bytes;
    } cases[] = {
        {{'\x00', '\x00', '\xFF'}, {'\xF8', '\x00'}}, {{'\x00', '\xFF', '\x00'}, {'\x07', '\xE0'}},
        {{'\xFF', '\x00', '\x00'}, {'\x00', '\x1F'}}, {{'\xFF', '\xFF', '\xFF'}, {'\xFF', '\xFF'}},
        {{'\x07', '\x03', '\x07'}, {'\x00', '\x00'}}, {{'\x08', '\x04', '\x08'}, {'\x08', '\x21'}},
    };
    for (const auto &[pixel, bytes] : cases) {
        const auto in = reinterpret_cast<const uint8_t *>(pixel.data());
        EXPECT_EQ(as_text(rgb888_to_rgb565(in, 1, 1), 2), bytes);
    }
}

TEST(mw_bmp, loads_the_pictures_that_another_program_wrote) {
    for (const auto &[width, height] : {std::pair(1, 1),
                                        {1, 5},
                                        {2, 3},
                                        {3, 2},
                                        {4, 4},
                                        {5, 1},
                                        {294, 126},
                                        {293, 125},
                                        {640, 480}}) {
        const std::string pixels = random_pixels(width, height);
        put_file(path, bmp_of(width, height, pixels));
        int read_width = 0;
        int read_height = 0;
        const auto loaded = read_bmp_rgb565(path, &read_width, &read_height);
        EXPECT_EQ(std::pair(read_width, read_height), std::pair(width, height));
        const auto size = static_cast<size_t>(width * height * 2);
        EXPECT_TRUE(as_text(loaded, size) == rgb565_of(pixels)) << width << " x " << height;

        int bytes_per_pixel = 0;
        const auto stored = read_bmp(path, &read_width, &read_height, &bytes_per_pixel);
        const auto packed = bmp_to_buff(stored.get(), width, height, 3);
        const auto narrow = rgb888_to_rgb565(packed.get(), width, height);
        const auto turned = bmp_bottom_to_top(narrow.get(), width, height, 2);
        EXPECT_TRUE(as_text(turned, size) == rgb565_of(pixels)) << "step by step";
    }
}

} // namespace
