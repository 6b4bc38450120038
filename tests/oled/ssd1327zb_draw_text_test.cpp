#include "oled/ssd1327zb_draw_text.h"

#include "tests/support/grey.h"
#include "tests/support/output.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace renewer;

namespace {

const std::string no_character = "this is neither Ascii nor chinese character!\n";

// Texts that hold no characters only, and how many columns those before take.
const struct {
    const char *what;
    std::string text;
    int columns_before;
} invalid_texts[] = {
    {"a value below the first ideograph", "AB\xE4\xB8\x7F", 16},
    {"a value above the last ideograph", "A\xE9\xBE\xA6", 8},
    {"a Cyrillic letter", "Ж", 0},
    {"a Cyrillic letter in the middle", "卫Ж星", 16},
    {"the degree-Celsius sign", "21℃", 16},
    {"the degree sign", "21°", 16},
    {"a following byte first", "\x80 ok", 0},
    {"the last following byte first", "\xBF\xBF\xBF", 0},
    {"a sequence of one byte at the end", "A\xE5", 8},
    {"a sequence of two bytes at the end", "A\xE5\x8D", 8},
    {"the highest byte alone", "\xFF", 0},
    {"the highest bytes", "\xFF\xFF\xFF", 0},
    {"a sequence of four bytes", "😀", 0},
};

// A strip with pixels of its own, which hold 9 at first.
struct owned_strip {
    std::vector<uint8_t> pixels;
    strbuf strip;

    explicit owned_strip(size_t size, uint16_t height = 16)
        : pixels(size, 9), strip{0, height, pixels.data(), static_cast<uint32_t>(size)} {}

    strbuf *render(const std::string &text) {
        pixels.shrink_to_fit();
        strip.buf = pixels.data();
        return ssd1327zb_str_to_strbuf(text.c_str(), &strip);
    }
    // The first 16 rows of some columns, as lines of '#', '.' and, for others, '?'.
    std::string drawing(int first, int count) const {
        std::string lines;
        for (int i = 0; i < 16 * count; ++i) {
            const int level =
                pixels[static_cast<size_t>(i / count * strip.width + first + i % count)];
            lines += level == 15 ? '#' : level == 0 ? '.' : '?';
            lines += (i + 1) % count == 0 ? "\n" : "";
        }
        return lines;
    }
};

const std::string capital_a = "........\n........\n........\n........\n"
                              "...##...\n..#..#..\n..#..#..\n.#....#.\n"
                              ".#....#.\n.######.\n.#....#.\n.#....#.\n"
                              ".#....#.\n.#....#.\n........\n........\n";

std::string cross() {
    std::string lines;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            lines += x == y || x == 15 - y ? '#' : '.';
        }
        lines += '\n';
    }
    return lines;
}

std::string untouched(int columns) {
    std::string lines;
    for (int y = 0; y < 16; ++y) {
        lines += std::string(static_cast<size_t>(columns), '?') + '\n';
    }
    return lines;
}

TEST(ssd1327zb_draw_text, counts_the_bytes_of_a_strip) {
    const struct {
        std::string text;
        int size;
    } cases[] = {
        {"", 0},
        {"A", 128},
        {"A卫", 384},
        {"卫星A", 640},
        {"\x01\x7F\n", 384},
        {"\xE4\xB8\x80", 256},
        {"\xE9\xBE\xA5", 256},
        {"\xE5\x41\x42", 256}, // within the bounds, though no UTF-8
        {std::string(100000, 'x'), 12800000},
    };
    output_listener printed;
    for (const auto &[text, size] : cases) {
        EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), size) << text.substr(0, 20);
    }
    EXPECT_EQ(ssd1327zb_get_strbuf_size(nullptr), -1);
    EXPECT_EQ(printed.text, "");
}

TEST(ssd1327zb_draw_text, counts_up_to_the_largest_strip) {
    std::string text((1 << 24) - 1, 'x');
    EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), 2147483520);
    text += 'x';
    EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), -1);
    text.resize(text.size() * 2, 'x');
    EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), -1);
}

TEST(ssd1327zb_draw_text, refuses_what_is_no_character) {
    for (const auto &[what, text, columns] : invalid_texts) {
        owned_strip strip(128 * 16);
        std::string said;
        int32_t size = 0;
        strbuf *rendered = nullptr;
        {
            output_listener printed;
            size = ssd1327zb_get_strbuf_size(text.c_str());
            rendered = strip.render(text);
            said = printed.text;
        }
        EXPECT_EQ(size, -1) << what;
        EXPECT_EQ(rendered, nullptr) << what;
        EXPECT_EQ(said, no_character + no_character) << what;
        EXPECT_EQ(strip.drawing(0, columns).find('?'), std::string::npos) << what;
        EXPECT_EQ(strip.drawing(columns, 128 - columns), untouched(128 - columns)) << what;
    }
}

TEST(ssd1327zb_draw_text, renders_characters_side_by_side) {
    owned_strip strip(384);
    EXPECT_EQ(strip.render("A卫"), &strip.strip);
    EXPECT_EQ(strip.strip.width, 24);
    EXPECT_EQ(strip.drawing(0, 8), capital_a);
    owned_strip alone(256);
    alone.render("卫");
    EXPECT_EQ(strip.drawing(8, 16), alone.drawing(0, 16));
    EXPECT_NE(alone.drawing(0, 16), cross());
}

TEST(ssd1327zb_draw_text, crosses_out_ideographs_without_a_glyph) {
    output_listener printed;
    for (const char *text : {"\xE4\xB8\x80", "\xE9\xBE\xA5", "\xE5\x41\x42", "龙"}) {
        owned_strip strip(256);
        EXPECT_NE(strip.render(text), nullptr);
        EXPECT_EQ(strip.drawing(0, 16), cross()) << text;
    }
    EXPECT_EQ(printed.text, "");
}

TEST(ssd1327zb_draw_text, leaves_the_rest_of_a_larger_strip) {
    owned_strip strip(32 * 40, 32);
    EXPECT_NE(strip.render("卫A"), nullptr);
    EXPECT_EQ(strip.strip.width, 40);
    EXPECT_EQ(strip.drawing(16, 8), capital_a);
    EXPECT_EQ(strip.drawing(24, 16), untouched(16));
    EXPECT_EQ(std::vector<uint8_t>(strip.pixels.begin() + 16 * 40, strip.pixels.end()),
              std::vector<uint8_t>(16 * 40, 9));
}

TEST(ssd1327zb_draw_text, renders_nothing_that_does_not_fit) {
    const struct {
        const char *what;
        size_t size;
        uint16_t height;
        std::string text;
        int width; // -1 when it is not set
    } cases[] = {
        {"no height", 256, 0, "A", -1},
        {"too low", 255, 15, "A", -1},
        {"no multiple of the height", 257, 16, "A", 16},
        {"one column short", 112, 16, "A", 7},
        {"one column short for the second", 15 * 16, 16, "AB", 15},
        {"one column short for the ideograph", 23 * 16, 16, "A卫", 23},
        {"empty", 0, 16, "A", 0},
        {"too high for its bytes", 256, 32, "AB", 8},
        {"one column short of what comes before no character", 15 * 16, 16, "ABЖ", 15},
        {"more columns than the record can tell", 65536 * 16, 16, "A", -1},
        {"a very long text", 65535 * 16, 16, std::string(8192, 'x'), 65535},
    };
    output_listener printed;
    for (const auto &[what, size, height, text, width] : cases) {
        owned_strip strip(size, height);
        strip.strip.width = 4711;
        EXPECT_EQ(strip.render(text), nullptr) << what;
        EXPECT_EQ(strip.strip.width, width == -1 ? 4711 : width) << what;
        EXPECT_EQ(strip.pixels, std::vector<uint8_t>(size, 9)) << what;
    }
    owned_strip strip(128);
    EXPECT_EQ(ssd1327zb_str_to_strbuf(nullptr, &strip.strip), nullptr);
    EXPECT_EQ(ssd1327zb_str_to_strbuf("A", nullptr), nullptr);
    strip.strip.buf = nullptr;
    EXPECT_EQ(ssd1327zb_str_to_strbuf("A", &strip.strip), nullptr);
    EXPECT_EQ(printed.text, "");
    owned_strip empty(0);
    EXPECT_EQ(empty.render(""), &empty.strip) << "fits, as there is nothing to render";
    owned_strip longest(8191 * 128);
    EXPECT_NE(longest.render(std::string(8191, 'A')), nullptr);
    EXPECT_EQ(longest.drawing(8190 * 8, 8), capital_a);
}

struct request {
    int start;
    box area;
    uint32_t flags;
};

// What drawing pixel by pixel gives.
grey_levels with_strip(grey_levels levels, const strbuf &strip, const request &wanted) {
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < wanted.area.width && wanted.start + x < strip.width; ++x) {
            const int level = strip.buf[y * strip.width + wanted.start + x] % 16;
            if (level != 0 || (wanted.flags & 2) == 0) {
                levels[static_cast<size_t>((wanted.area.y + y) * 128 + wanted.area.x + x)] =
                    static_cast<uint8_t>((wanted.flags & 1) != 0 ? 15 - level : level);
            }
        }
    }
    return levels;
}

TEST(ssd1327zb_draw_text, draws_any_part_of_a_strip_into_any_box_and_nothing_else) {
    any_canvas drawn;
    int done = 0, refused = 0;
    for (int turn = 0; turn < 3000; ++turn) {
        const int width = thrown(0, 3) == 0 ? thrown(0, 3) : thrown(0, 200);
        owned_strip strip(static_cast<size_t>(width) * 16);
        for (uint8_t &level : strip.pixels) {
            level = static_cast<uint8_t>(thrown(0, 1) == 0 ? 0 : thrown(0, 255));
        }
        strip.strip.width = static_cast<uint16_t>(width);
        request wanted = {thrown(-2, width + 2), thrown_box(), static_cast<uint32_t>(thrown(0, 3))};
        wanted.area.height = thrown(0, 9) == 0 ? wanted.area.height : 16;
        const bool valid =
            wanted.start >= 0 && lies_on_panel(wanted.area) && wanted.area.height == 16;
        const grey_levels before = drawn.levels();
        ++(valid ? done : refused);
        ASSERT_EQ(ssd1327zb_draw_strbuf_on_canvas(&strip.strip, wanted.start, drawn.frame,
                                                  &wanted.area, wanted.flags),
                  valid ? 0 : -1);
        ASSERT_TRUE(drawn.levels() == (valid ? with_strip(before, strip.strip, wanted) : before))
            << wanted.area.x << ' ' << wanted.area.width << " from " << wanted.start << " of "
            << width << " with " << wanted.flags;
    }
    EXPECT_GT(done, 300);
    EXPECT_GT(refused, 300);
}

TEST(ssd1327zb_draw_text, draws_what_is_left_of_the_strip) {
    owned_strip strip(100 * 16);
    strip.strip.width = 100;
    const struct {
        int start;
        int columns;
    } cases[] = {{90, 10}, {60, 40}, {59, 40}, {99, 1}, {100, 0}, {101, 0}, {INT32_MAX, 0}};
    for (const auto &[start, columns] : cases) {
        canvas *frame = ssd1327zb_create_canvas();
        const box area = {3, 5, 40, 16};
        EXPECT_EQ(ssd1327zb_draw_strbuf_on_canvas(&strip.strip, start, frame, &area, 0), 0);
        const grey_levels levels = levels_of(frame->buf);
        EXPECT_EQ(std::count(levels.begin(), levels.end(), 9), columns * 16) << start;
        EXPECT_EQ(levels[5 * 128 + 3], columns > 0 ? 9 : 0);
        ssd1327zb_destroy_canvas(&frame);
    }
}

TEST(ssd1327zb_draw_text, inverts_and_lets_the_background_through) {
    const struct {
        uint32_t flags;
        int ink, background;
    } cases[] = {{0, 15, 0}, {1, 0, 15}, {2, 15, 6}, {3, 0, 6}};
    for (const auto &[flags, ink, background] : cases) {
        owned_strip strip(128);
        strip.render("A");
        any_canvas drawn;
        memset(drawn.frame->buf, 0x66, drawn.frame->size);
        const box area = {1, 0, 8, 16};
        EXPECT_EQ(ssd1327zb_draw_strbuf_on_canvas(&strip.strip, 0, drawn.frame, &area, flags), 0);
        const grey_levels levels = drawn.levels();
        EXPECT_EQ(levels[4 * 128 + 1 + 3], ink) << flags;
        EXPECT_EQ(levels[4 * 128 + 1 + 2], background) << flags;
        EXPECT_EQ(levels[4 * 128], 6) << "the neighbours stay";
        EXPECT_EQ(levels[4 * 128 + 9], 6);
    }
}

TEST(ssd1327zb_draw_text, draws_nothing_from_what_is_not_there) {
    any_canvas drawn;
    const grey_levels before = drawn.levels();
    const box area = {0, 0, 16, 16};
    owned_strip strip(256);
    strip.render("卫");
    const auto draw = [&](strbuf from, canvas *frame, const box *where, int start = 0) {
        return ssd1327zb_draw_strbuf_on_canvas(&from, start, frame, where, 0);
    };
    strbuf changed = strip.strip;
    changed.width = 17; // more pixels than bytes
    EXPECT_EQ(draw(changed, drawn.frame, &area), -1);
    changed = strip.strip;
    changed.height = 17;
    EXPECT_EQ(draw(changed, drawn.frame, &area), -1);
    changed = strip.strip;
    changed.buf = nullptr;
    EXPECT_EQ(draw(changed, drawn.frame, &area), -1);
    EXPECT_EQ(draw(strip.strip, nullptr, &area), -1);
    EXPECT_EQ(draw(strip.strip, drawn.frame, nullptr), -1);
    EXPECT_EQ(draw(strip.strip, drawn.frame, &area, INT32_MIN), -1);
    EXPECT_EQ(ssd1327zb_draw_strbuf_on_canvas(nullptr, 0, drawn.frame, &area, 0), -1);
    canvas small = {128, 128, 4, drawn.frame->buf, 100};
    EXPECT_EQ(draw(strip.strip, &small, &area), -1);
    EXPECT_TRUE(drawn.levels() == before);
    EXPECT_EQ(draw(strip.strip, drawn.frame, &area), 0);
    EXPECT_FALSE(drawn.levels() == before) << "the control";
}

} // namespace
