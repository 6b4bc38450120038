#include "simulator/panels/picture.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

TEST(png, keeps_each_pixel) {
    const picture written = {2, 2, {0, 1, 2, 253, 254, 255, 7, 7, 7, 0, 255, 0}};
    write_png("/tmp/picture.png", written);
    EXPECT_EQ(read_png("/tmp/picture.png"), written);
    EXPECT_THROW(read_png("/tmp/none.png"), std::runtime_error);
}

} // namespace
