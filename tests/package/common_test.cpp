#include "package/common.h"

#include <gtest/gtest.h>
#include <md5.h>

#include <climits>
#include <string>
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
    EXPECT_EQ(crc_of(std::string(32, '\xff')), 0xFF6CAB0BU);
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
        {"", "", 0},
        {"1.1.4", "1.1.10", -6},
        {"1.2", "1.2.1", -1},
        {"1.2.1", "1.2", 1},
        {"1.1.4\n", "1.1.4", 1},
        {"", "1.1.4", -1},
        {"2.0.0", "1.9.9", 1},
        {"12", "13", -1},
        {"12", "2", 10},
        {"1.10.1", "1.1.10", 9},
        {"1.12", "1.13", -1},
        {"1.2.7", "1.237", 0},
        {"1.1", "11", 1},
        {"11", "1.1", 10},
        {".5", ".7", 0},
        {"1.a", "1.b", 0},
        {"1. 7", "1.-7", 14},
        {"1.4294967296", "1.1", INT_MAX},
        {"1.1", "1.4294967296", INT_MIN},
        {"99999999999999999999", "-99999999999999999999", INT_MAX},
        {"-99999999999999999999", "99999999999999999999", INT_MIN},
        {"3000000000", "3000000001", -1},
        {nullptr, "1", 0},
        {"1", nullptr, 0},
        {nullptr, nullptr, 0},
    };
    for (const auto &[a, b, difference] : cases) {
        EXPECT_EQ(edition_compare(a, b), difference)
            << (a ? a : "null") << " with " << (b ? b : "null");
    }
}

std::string digest_of(std::string_view text, size_t chunk) {
    MD5_CTX context;
    MD5Init(&context);
    for (; !text.empty(); text.remove_prefix(std::min(chunk, text.size()))) {
        MD5Update(&context, reinterpret_cast<const uint8_t *>(text.data()),
                  std::min(chunk, text.size()));
    }
    uint8_t digest[16];
    MD5Final(digest, &context);
    std::string hex;
    for (const uint8_t byte : digest) {
        hex += "0123456789abcdef"[byte >> 4];
        hex += "0123456789abcdef"[byte & 15];
    }
    return hex;
}

// RFC 1321, test suite.
TEST(common, digest_does_not_depend_on_the_chunks) {
    EXPECT_EQ(digest_of("", 1), "d41d8cd98f00b204e9800998ecf8427e");
    const std::string digits = "1234567890123456789012345678901234567890"
                               "1234567890123456789012345678901234567890";
    for (const size_t chunk : {1U, 7U, 63U, 64U, 65U, 80U}) {
        EXPECT_EQ(digest_of(digits, chunk), "57edf4a22be3c955ac49da2e2107b67a") << chunk;
    }
}

} // namespace
