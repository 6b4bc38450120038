#include "package/common.h"

#include <gtest/gtest.h>

#include <climits>
#include <string_view>

using namespace renewer;

namespace {

uint32_t crc_of(std::string_view text) {
    return crc32(reinterpret_cast<const unsigned char *>(text.data()),
                 static_cast<unsigned>(text.size()));
}

TEST(common, crc32_of_known_texts) {
    EXPECT_EQ(crc_of(""), 0U);
    EXPECT_EQ(crc_of("123456789"), 0xCBF43926U);
    EXPECT_EQ(crc_of("The quick brown fox jumps over the lazy dog"), 0x414FA339U);
    EXPECT_EQ(crc_of("\xff\xff\xff\xff"), 0xFFFFFFFFU);
}

TEST(common, crc_table_of_the_standard) {
    crc_table.fill(0xdeadbeef);
    init_crc_table();
    EXPECT_EQ(crc_table[0], 0U);
    EXPECT_EQ(crc_table[1], 0x77073096U);
    EXPECT_EQ(crc_table[128], 0xEDB88320U);
    EXPECT_EQ(crc_table[255], 0x2D02EF8DU);
}

TEST(common, later_editions_compare_greater) {
    struct {
        const char *a;
        const char *b;
        int difference;
    } const cases[] = {
        {"1.1.4", "1.1.4", 0},
        {"1.1.4", "1.1.10", -6},
        {"1.2.1", "1.2", 1},
        {"1.1.4\n", "1.1.4", 1},
        {"", "1.1.4", -1},
        {"2.0.0", "1.9.9", 1},
        {"12", "2", 10},
        {"1.10.1", "1.1.10", 9},
        {"1.2.7", "1.237", 0},
        {"1.1", "11", 1},
        {"11", "1.1", 10},
        {".5", ".7", 0},
        {"1. 7", "1.-7", 14},
        {"1.4294967296", "1.1", INT_MAX},
        {"1.1", "1.4294967296", INT_MIN},
        {"99999999999999999999", "-99999999999999999999", INT_MAX},
        {"-99999999999999999999", "99999999999999999999", INT_MIN},
        {nullptr, "1", 0},
        {"1", nullptr, 0},
        {nullptr, nullptr, 0},
    };
    for (const auto &[a, b, difference] : cases) {
        EXPECT_EQ(edition_compare(a, b), difference)
            << (a ? a : "null") << " with " << (b ? b : "null");
    }
}

} // namespace
