#include "lcd/sa1230_layer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using namespace renewer;

namespace {

sa1230_layer layer_of(std::string &pixels, int x, int y, int width, int height) {
    return {reinterpret_cast<uint8_t *>(pixels.data()), x, y, width, height};
}

// A picture of 3 x 2 pixels, A to F; a pixel of n bytes is "A", "Aa", "Aab" or "Aabc".
std::string letters(const std::string &order, int pixel_size) {
    std::string pixels;
    for (const char letter : order) {
        pixels += (std::string(1, letter) + "abc").substr(0, static_cast<size_t>(pixel_size));
    }
    return pixels;
}

TEST(sa1230_layer, rotates_counter_clockwise) {
    for (uint8_t pixel_size = 1; pixel_size <= 4; ++pixel_size) {
        std::string pixels = letters("ABCDEF", pixel_size);
        std::string rotated(pixels.size(), '.');
        const sa1230_layer source = layer_of(pixels, 7, 8, 3, 2);
        sa1230_layer destination = layer_of(rotated, 5, 6, 0, 0);
        EXPECT_EQ(change_layer_direction(&source, &destination, pixel_size), 0);
        EXPECT_EQ(rotated, letters("CFBEAD", pixel_size));
        EXPECT_EQ(destination.width, 2);
        EXPECT_EQ(destination.height, 3);
        EXPECT_EQ(destination.x, 5);
        EXPECT_EQ(destination.y, 6);
    }
}

TEST(sa1230_layer, rotation_refuses_missing_pixels_and_odd_pixel_sizes) {
    std::string pixels(4, 'x');
    sa1230_layer whole = layer_of(pixels, 0, 0, 2, 1);
    sa1230_layer empty = {nullptr, 0, 0, 2, 1};
    EXPECT_EQ(change_layer_direction(nullptr, &whole, 2), -1);
    EXPECT_EQ(change_layer_direction(&whole, nullptr, 2), -1);
    EXPECT_EQ(change_layer_direction(&empty, &whole, 2), -1);
    EXPECT_EQ(change_layer_direction(&whole, &empty, 2), -1);
    EXPECT_EQ(change_layer_direction(&whole, &whole, 0), -1);
    EXPECT_EQ(change_layer_direction(&whole, &whole, 5), -1);
    EXPECT_EQ(add_element_to_layer(nullptr, &whole), -1);
    EXPECT_EQ(add_element_to_layer(&whole, nullptr), -1);
    EXPECT_EQ(add_element_to_layer(&empty, &whole), -1);
    EXPECT_EQ(add_element_to_layer(&whole, &empty), -1);
    EXPECT_EQ(pixels, "xxxx");
}

TEST(sa1230_layer, draws_an_element_that_lies_inside_at_its_place) {
    const struct {
        int x, y, width, height;
        const char *drawn; // one letter a pixel; empty when it is refused
    } cases[] = {
        {10, 20, 4, 3, "#### #### ####"},
        {10, 20, 1, 1, "#... .... ...."},
        {13, 22, 1, 1, ".... .... ...#"},
        {11, 21, 2, 2, ".... .##. .##."},
        {9, 20, 1, 1, ""},
        {10, 19, 1, 1, ""},
        {13, 20, 2, 1, ""},
        {10, 22, 1, 2, ""},
        {14, 20, 1, 1, ""},
        {INT_MAX, 20, INT_MAX, 1, ""},
        {10, 20, INT_MAX, 1, ""},
        {10, INT_MAX, 1, INT_MAX, ""},
    };
    for (const auto &[x, y, width, height, drawn] : cases) {
        std::string surface(4 * 3 * 2, '\0');
        std::string ink(24, '#');
        const sa1230_layer layer = layer_of(surface, 10, 20, 4, 3);
        const sa1230_layer element = layer_of(ink, x, y, width, height);
        EXPECT_EQ(add_element_to_layer(&layer, &element), *drawn ? 0 : -1) << x << "," << y;
        std::string expected;
        for (const char letter : std::string(*drawn ? drawn : "............")) {
            expected += letter == ' ' ? "" : std::string(2, letter == '#' ? '#' : '\0');
        }
        EXPECT_EQ(surface, expected) << x << "," << y;
    }
}

TEST(sa1230_layer, overlapping_elements_are_combined_by_or) {
    std::string surface(2, '\0');
    std::string first = {'\x0F', '\x11'};
    std::string second = {'\x35', '\x80'};
    const sa1230_layer layer = layer_of(surface, 0, 0, 1, 1);
    for (std::string *pixels : {&first, &second}) {
        const sa1230_layer element = layer_of(*pixels, 0, 0, 1, 1);
        EXPECT_EQ(add_element_to_layer(&layer, &element), 0);
    }
    EXPECT_EQ(surface, std::string({'\x3F', '\x91'}));
}

} // namespace
