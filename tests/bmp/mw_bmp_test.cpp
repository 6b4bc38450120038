#include "bmp/mw_bmp.h"

#include "tests/support/after_2038.h"
#include "tests/support/files.h"
#include "tests/support/pictures.h"
#include "tests/support/printed.h"
#include "tests/support/scarce_memory.h"

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

// Loads the picture while so many allocations succeed.
load_result load_with(int allocations) {
    int width = 0;
    int height = 0;
    load_result result;
    result.output = printed([&] {
        largest_allocation = 0;
        allocations_left = allocations;
        result.pixels = read_bmp_rgb565(path, &width, &height);
        allocations_left = INT_MAX;
    });
    return result;
}

TEST(mw_bmp, refuses_what_is_no_picture_and_takes_no_memory_for_it) {
    const std::string bad_head = "bmp head err\nread bmp err\n";
    const std::string bad_bits = "bmp bit count err\nread bmp err\n";
    const std::string no_memory = "malloc err\nread bmp err\n";
    const struct {
        std::string file;
        std::string output;
    } refusals[] = {
        {"", bad_head},
        {bmp{}.first(53), bad_head},
        {bmp{}.first(54), bad_head},
        {bmp{}.first(54 + 23), bad_head},
        {bmp{.width = 3}.first(54 + 20), bad_head}, // more than the last row's padding is missing
        {bmp{.signature = "MB"}.bytes(), bad_head},
        {bmp{.offset = 55}.bytes(), bad_head},
        {bmp{.offset = 79}.bytes(), bad_head},
        {bmp{.offset = UINT_MAX}.bytes(), bad_head},
        {bmp{.bits = 23}.bytes(), bad_bits},
        {bmp{.bits = 32, .pixel_bytes = 32}.bytes(), "bit count is 4\n"},
        {bmp{.bits = 65535}.bytes(), bad_head},
        {bmp{.width = 0}.bytes(), bad_head},
        {bmp{.height = 0}.bytes(), bad_head},
        {bmp{.height = 3}.bytes(), bad_head},
        {bmp{.height = -2}.bytes(), no_memory},
        {bmp{.width = -4}.bytes(), no_memory},
        {bmp{.width = INT_MIN, .height = INT_MIN}.bytes(), no_memory},
        {bmp{.width = 0x55555557, .height = 1}.bytes(), bad_head}, // a row of 4 bytes for an int
        {bmp{.width = INT_MAX, .height = INT_MAX, .bits = 65528}.bytes(), bad_head},
    };
    const size_t descriptors = open_descriptors();
    for (const auto &[file, output] : refusals) {
        put_file(path, file);
        const load_result loaded = load_with(INT_MAX);
        EXPECT_LE(largest_allocation, 48u) << &file - &refusals[0].file;
        EXPECT_EQ(loaded.pixels, nullptr);
        EXPECT_EQ(loaded.output, output);
    }
#if __SIZEOF_LONG__ == 8 // no file of a 32-bit system holds as much
    put_file(path, bmp{.width = 40000, .height = 20000}.first(54));
    std::filesystem::resize_file(path, 54 + 40000ull * 20000 * 3);
    EXPECT_EQ(load_with(INT_MAX).output, no_memory) << "beyond an int";
#endif
    EXPECT_EQ(open_descriptors(), descriptors);
    for (const int width : {3, 4}) {
        put_file(path, bmp{.width = width}.bytes());
        EXPECT_EQ(load_with(0).output, no_memory);
        EXPECT_NE(load_with(1).pixels, nullptr) << "for the stored rows alone";
        EXPECT_EQ(largest_allocation, 24u);
    }
    EXPECT_EQ(printed([size = 0]() mutable {
                  EXPECT_EQ(read_bmp_rgb565("/reserve/none.bmp", &size, &size), nullptr);
                  EXPECT_EQ(read_bmp_rgb565(nullptr, &size, &size), nullptr);
                  EXPECT_EQ(read_bmp_rgb565(path, nullptr, &size), nullptr);
                  EXPECT_EQ(read_bmp_rgb565(path, &size, nullptr), nullptr);
              }),
              "open /reserve/none.bmp failed\nread bmp err\n"
              "input point is null\ninput point is null\ninput point is null\n");
}

TEST(mw_bmp, returns_the_stored_rows_and_their_sizes) {
    put_file(path, bmp{.width = 3}.bytes());
    utimensat(AT_FDCWD, path, after_2038, 0);
    int width = 0;
    int height = 0;
    int bytes_per_pixel = 0;
    const auto rows = read_bmp(path, &width, &height, &bytes_per_pixel);
    EXPECT_EQ(as_text(rows, 24), bmp{}.bytes().substr(54)) << "padding included";
    EXPECT_EQ(std::tuple(width, height, bytes_per_pixel), std::tuple(3, 2, 3));
    put_file(path, bmp{.width = 3}.first(54 + 21));
    EXPECT_EQ(as_text(read_bmp(path, &width, &height, &bytes_per_pixel), 24),
              bmp{}.bytes().substr(54, 21) + std::string(3, '\0'));
    for (const bmp &refused : {bmp{.width = 70000, .height = -5, .bits = 32},
                               bmp{.width = 9, .bits = 16}}) { // whose sizes are not checked
        put_file(path, refused.bytes());
        EXPECT_EQ(read_bmp(path, &width, &height, &bytes_per_pixel), nullptr);
        EXPECT_EQ(std::tuple(width, height, bytes_per_pixel), std::tuple(70000, -5, 4));
    }
}

TEST(mw_bmp, rearranges_rows) {
    const std::string stored = "abcdef..ghijkl..mnopqr..";
    const auto in = reinterpret_cast<const uint8_t *>(stored.data());
    EXPECT_EQ(as_text(bmp_to_buff(in, 2, 3, 3), 18), "abcdefghijklmnopqr");
    EXPECT_EQ(as_text(bmp_to_buff(in, 2, 3, 4), 24), stored) << "nothing to strip";
    EXPECT_EQ(as_text(bmp_bottom_to_top(in, 2, 3, 4), 24), "mnopqr..ghijkl..abcdef..");
    EXPECT_EQ(as_text(bmp_bottom_to_top(in, 3, 4, 2), 24), "opqr..kl..mn..ghijabcdef");
    const std::string pixels("\0\0\xFF\0\xFF\0\xFF\0\0\7\3\7\b\4\b", 15); // blue, green, red
    EXPECT_EQ(as_text(rgb888_to_rgb565(reinterpret_cast<const uint8_t *>(pixels.data()), 5, 1), 10),
              std::string("\xF8\0\x07\xE0\0\x1F\0\0\x08\x21", 10));
}

TEST(mw_bmp, steps_refuse_missing_rows_sizes_beyond_an_int_and_too_little_memory) {
    const uint8_t pixel[4] = {};
    const auto refuse = [](const uint8_t *in, int width, int height, int allocations) {
        return printed([&] {
            allocations_left = allocations;
            EXPECT_EQ(bmp_to_buff(in, width, height, INT_MAX), nullptr);
            EXPECT_EQ(rgb888_to_rgb565(in, width, height), nullptr);
            EXPECT_EQ(bmp_bottom_to_top(in, width, height, 2), nullptr);
            allocations_left = INT_MAX;
        });
    };
    EXPECT_EQ(refuse(nullptr, 1, 1, INT_MAX), "in is null\nin is null\nin is null\n");
    const std::string no_memory = "malloc err\nmalloc err\nmalloc err\n";
    EXPECT_EQ(refuse(pixel, 1, 1, 0), no_memory);
    for (const auto &[width, height] :
         {std::pair(INT_MAX, INT_MAX), {0x10000, 0x10000}, {-1, 1}, {1, -1}, {0, 1}}) {
        EXPECT_EQ(refuse(pixel, width, height, INT_MAX), no_memory) << width << " " << height;
    }
}

TEST(mw_bmp, loads_the_pictures_that_another_program_wrote) {
    for (const auto &[width, height] :
         {std::pair(1, 5), {2, 3}, {3, 2}, {4, 4}, {293, 125}, {294, 126}}) {
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
        const auto flipped = bmp_bottom_to_top(narrow.get(), width, height, 2);
        EXPECT_TRUE(as_text(flipped, size) == rgb565_of(pixels)) << "step by step";
    }
}

} // namespace
