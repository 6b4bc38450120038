#include "simulator/picture.h"
#include "simulator/terminal_picture.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

TEST(terminal_picture, shows_two_rows_in_one_line) {
    const picture three_rows = {2, 3, {1, 2, 3, 1, 2, 3, 4, 5, 6, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
    EXPECT_EQ(terminal_text(three_rows), "\033[38;2;1;2;3m\033[48;2;4;5;6m▀▀\033[0m\n"
                                         "\033[38;2;7;8;9m▀\033[38;2;10;11;12m▀\033[0m\n");
}

TEST(png, keeps_each_pixel) {
    const picture written = {2, 2, {0, 1, 2, 253, 254, 255, 7, 7, 7, 0, 255, 0}};
    write_png("/tmp/picture.png", written);
    EXPECT_EQ(read_png("/tmp/picture.png"), written);
    EXPECT_THROW(read_png("/tmp/none.png"), std::runtime_error);
}

} // namespace
