#include "oled/ssd1327zb_draw_text.h"

#include "tests/support/grey.h"
#include "tests/support/printed.h"

#include <string>
#include <vector>

using namespace renewer;

namespace {

const std::string no_character = "this is neither Ascii nor chinese character!\n";

// Texts with something that is no character, and the columns of the characters before it.
const struct {
    std::string text;
    int columns_before;
} invalid_texts[] = {
    {"AB\xE4\xB8\x7F", 16}, // below the first ideograph
    {"A\xE9\xBE\xA6", 8},   // above the last
    {"卫Ж星", 16},          // Cyrillic
    {"21℃", 16},
    {"\x80 ok", 0}, // a following byte first
    {"A\xE5", 8},   // sequences cut short
    {"A\xE5\x8D", 8},
    {"\xFF\xFF\xFF", 0},
    {"😀", 0},
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
        {"卫星A\x01", 768},
        {"\xE4\xB8\x80", 256},
        {"\xE9\xBE\xA5", 256},
        {"\xE5\x41\x42", 256}, // within the bounds, but not UTF-8
        {std::string((1 << 24) - 1, 'x'), 2147483520},
        {std::string(1 << 24, 'x'), -1},
        {std::string(1 << 25, 'x'), -1},
    };
    EXPECT_EQ(printed([&] {
                  for (const auto &[text, size] : cases) {
                      EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), size);
                  }
                  EXPECT_EQ(ssd1327zb_get_strbuf_size(nullptr), -1);
              }),
              "");
}

TEST(ssd1327zb_draw_text, refuses_what_is_no_character) {
    for (const auto &[text, columns] : invalid_texts) {
        owned_strip strip(128 * 16);
        EXPECT_EQ(printed([&, text = text] {
                      EXPECT_EQ(ssd1327zb_get_strbuf_size(text.c_str()), -1) << text;
                      EXPECT_EQ(strip.render(text), nullptr) << text;
                  }),
                  no_character + no_character);
        EXPECT_EQ(strip.drawing(0, columns).find('?'), std::string::npos) << text;
        EXPECT_EQ(strip.drawing(columns, 128 - columns), untouched(128 - columns)) << text;
    }
}

TEST(ssd1327zb_draw_text, renders_characters_side_by_side) {
    owned_strip strip(32 * 40, 32);
    EXPECT_EQ(strip.render("卫A"), &strip.strip);
    EXPECT_EQ(strip.strip.width, 40);
    owned_strip alone(256);
    alone.render("卫");
    EXPECT_EQ(strip.drawing(0, 16), alone.drawing(0, 16));
    EXPECT_EQ(strip.drawing(16, 8), capital_a);
    EXPECT_EQ(strip.drawing(24, 16), untouched(16));
    EXPECT_EQ(std::count(strip.pixels.begin() + 16 * 40, strip.pixels.end(), 9), 16 * 40);
    owned_strip longest(8191 * 128);
    EXPECT_NE(longest.render(std::string(8191, 'A')), nullptr);
    EXPECT_EQ(longest.drawing(8190 * 8, 8), capital_a);
    owned_strip empty(0);
    EXPECT_EQ(empty.render(""), &empty.strip);
    EXPECT_NE(alone.drawing(0, 16), cross());
    for (const char *without_glyph : {"\xE4\xB8\x80", "\xE9\xBE\xA5", "\xE5\x41\x42", "龙"}) {
        alone.render(without_glyph);
        EXPECT_EQ(alone.drawing(0, 16), cross()) << without_glyph;
    }
}

TEST(ssd1327zb_draw_text, renders_nothing_that_does_not_fit) {
    const struct {
        size_t size;
        uint16_t height;
        std::string text;
        int width; // unchanged
    } cases[] = {
        {256, 0, "A", 4711},
        {255, 15, "A", 4711},
        {257, 16, "A", 16}, // no multiple of the height
        {112, 16, "A", 7},
        {15 * 16, 16, "AB", 15},
        {23 * 16, 16, "A卫", 23},
        {0, 16, "A", 0},
        {256, 32, "AB", 8},
        {15 * 16, 16, "ABЖ", 15},
        {65536 * 16, 16, "A", 4711}, // more columns than the record can hold
        {65535 * 16, 16, std::string(8192, 'x'), 65535},
    };
    EXPECT_EQ(printed([&] {
                  for (const auto &[size, height, text, width] : cases) {
                      owned_strip strip(size, height);
                      strip.strip.width = 4711;
                      EXPECT_EQ(strip.render(text), nullptr) << size;
                      EXPECT_EQ(strip.strip.width, width) << size;
                      EXPECT_EQ(strip.pixels, std::vector<uint8_t>(size, 9)) << size;
                  }
                  owned_strip strip(128);
                  EXPECT_EQ(ssd1327zb_str_to_strbuf(nullptr, &strip.strip), nullptr);
                  EXPECT_EQ(ssd1327zb_str_to_strbuf("A", nullptr), nullptr);
                  strip.strip.buf = nullptr;
                  EXPECT_EQ(ssd1327zb_str_to_strbuf("A", &strip.strip), nullptr);
              }),
              "");
}

struct request {
    int start;
    box area;
    uint32_t flags;
    uint16_t row_length; // of the canvas
};

// The result of drawing pixel by pixel.
grey_levels with_strip(grey_levels levels, const strbuf &strip, const request &wanted) {
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < wanted.area.width && wanted.start + x < strip.width; ++x) {
            const int level = strip.buf[y * strip.width + wanted.start + x] % 16;
            if (level != 0 || (wanted.flags & 2) == 0) {
                levels[static_cast<size_t>((wanted.area.y + y) * wanted.row_length + wanted.area.x +
                                           x)] =
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
        const auto row_length = static_cast<uint16_t>(thrown(0, 1) == 0 ? 128 : thrown(0, 140));
        request wanted = {thrown(-2, width + 2), thrown_box(), static_cast<uint32_t>(thrown(0, 3)),
                          row_length};
        wanted.area.height = thrown(0, 9) == 0 ? wanted.area.height : 16;
        drawn.frame->width = row_length;
        drawn.frame->size = static_cast<uint32_t>(thrown(0, 3) == 0 ? thrown(0, 8192) : 8192);
        const int columns = std::min<int>(width - wanted.start, wanted.area.width);
        const int end = (wanted.area.y + 15) * row_length + wanted.area.x + columns;
        const bool valid = wanted.start >= 0 && lies_on_panel(wanted.area) &&
                           wanted.area.height == 16 &&
                           (columns <= 0 || end <= 2 * static_cast<int>(drawn.frame->size));
        const grey_levels before = drawn.levels();
        ++(valid ? done : refused);
        ASSERT_EQ(ssd1327zb_draw_strbuf_on_canvas(&strip.strip, wanted.start, drawn.frame,
                                                  &wanted.area, wanted.flags),
                  valid ? 0 : -1);
        ASSERT_TRUE(drawn.levels() == (valid ? with_strip(before, strip.strip, wanted) : before))
            << wanted.area.x << ' ' << wanted.area.width << " from " << wanted.start << " of "
            << width << " with " << wanted.flags;
    }
    EXPECT_GT(std::min(done, refused), 300);
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
    const strbuf whole = strip.strip;
    EXPECT_EQ(draw({17, 16, whole.buf, 256}, drawn.frame, &area), -1) << "more pixels than bytes";
    EXPECT_EQ(draw({16, 17, whole.buf, 272}, drawn.frame, &area), -1);
    EXPECT_EQ(draw({16, 16, nullptr, 256}, drawn.frame, &area), -1);
    EXPECT_EQ(draw(whole, nullptr, &area), -1);
    EXPECT_EQ(draw(whole, drawn.frame, nullptr), -1);
    EXPECT_EQ(draw(whole, drawn.frame, &area, INT32_MIN), -1);
    EXPECT_EQ(draw(whole, drawn.frame, &area, INT32_MAX), 0);
    EXPECT_EQ(ssd1327zb_draw_strbuf_on_canvas(nullptr, 0, drawn.frame, &area, 0), -1);
    canvas small = {128, 128, 4, drawn.frame->buf, 100};
    EXPECT_EQ(draw(whole, &small, &area), -1);
    EXPECT_TRUE(drawn.levels() == before);
}

} // namespace
