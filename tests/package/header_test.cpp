#include "package/package.h"

#include "platform/owner.h"
#include "tests/package/sample.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"

#include <gmock/gmock.h>

#include <climits>
#include <cstring>

using namespace renewer;
using namespace std::string_literals;

namespace {

constexpr const char *path = "/tmp/package.bin";
const std::string text = "1.1.4.0\0"s;

// The header of a file with this content, and what reading it returned.
struct reading {
    explicit reading(std::string_view content) {
        put_file(path, content);
        result = get_pack_head_new(path, &head);
        version.reset(head.version_content);
    }
    pack_head_new head = {};
    int result = -1;
    owned_memory<char> version;
};

TEST(header, fields_of_the_new_layout) {
    const sample::new_header bytes{.count = 3, .flag_low = 5, .flag_high = 0x80000000};
    const reading read(bytes.bytes() + text);
    ASSERT_EQ(read.result, 1);
    EXPECT_EQ(read.head.magic, magic_new);
    EXPECT_EQ(memcmp(read.head.md5, bytes.md5.data(), 16), 0);
    EXPECT_EQ(read.head.head_len, 108U);
    EXPECT_EQ(read.head.head_version, 1U);
    EXPECT_EQ(read.head.pnlen, 12U);
    EXPECT_STREQ(read.head.pn, "101356340012");
    EXPECT_EQ(read.head.version_len, 8U);
    EXPECT_STREQ(read.head.git_version, "1a2b3c4d");
    EXPECT_STREQ(read.head.date, "20240523");
    EXPECT_STREQ(read.head.time, "09.05.01");
    EXPECT_EQ(read.head.count, 3U);
    EXPECT_EQ(uint64_t{read.head.flag}, 0x8000000000000005ULL);
    EXPECT_STREQ(read.version.get(), "1.1.4.0");
}

// A header or version text that is cut off is refused, and no field beyond the cut is filled.
TEST(header, new_layout_cut_anywhere) {
    const std::string whole = sample::new_header{}.bytes() + text;
    struct {
        size_t length;
        int result;
        const char *version;
    } const cases[] = {{0, 0, nullptr}, {1, 0, ""},    {99, 0, ""},
                       {100, 0, ""},    {101, 1, "1"}, {108, 1, "1.1.4.0"}};
    for (const auto &[length, result, version] : cases) {
        const reading read(std::string_view(whole).substr(0, length));
        EXPECT_EQ(read.result, result) << length;
        EXPECT_STREQ(read.version.get(), version) << length;
        EXPECT_EQ(memcmp(&read.head, whole.data(), std::min<size_t>(length, 100)), 0) << length;
    }
}

TEST(header, version_length_claims_more_than_the_file_holds) {
    for (const uint32_t claimed : {9U, 100U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        const reading read(sample::new_header{.version_len = claimed}.bytes() + "1.1.4.0x");
        EXPECT_EQ(read.result, 1) << claimed;
        EXPECT_EQ(read.head.version_len, claimed);
        const size_t room = std::min<size_t>(claimed, 65536);
        EXPECT_EQ(std::string(read.version.get(), room), sample::field("1.1.4.0x", room))
            << claimed;
    }
    const reading read(sample::new_header{.version_len = 1000000}.bytes() +
                       std::string(1000000, '1'));
    EXPECT_EQ(read.result, 1);
    EXPECT_EQ(strlen(read.version.get()), 65536U);
}

TEST(header, fields_of_the_old_layout) {
    const sample::old_header bytes{.flag = 7, .count = 2};
    put_file(path, bytes.bytes());
    pack_head head = {};
    ASSERT_EQ(get_pack_head(path, &head), 1);
    EXPECT_EQ(head.magic, magic_old);
    EXPECT_EQ(memcmp(head.md5, bytes.md5.data(), 16), 0);
    EXPECT_EQ(head.version, 0x010203U);
    EXPECT_THAT(head.pn,
                testing::ElementsAre(0x12, 0x34, 0x56, 0x78, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(head.pnlen, 8U);
    EXPECT_EQ(head.date, 2024U * 512 + 5 * 32 + 23);
    EXPECT_EQ(head.time, 9U * 8192 + 5 * 64 + 1);
    EXPECT_EQ(head.flag, 7U);
    EXPECT_EQ(head.count, 2U);

    put_file(path, bytes.bytes().substr(0, 59));
    EXPECT_EQ(get_pack_head(path, &head), 0);
}

TEST(header, nothing_to_read) {
    pack_head old = {};
    pack_head_new head = {};
    uint32_t magic = 0;
    put_file(path, sample::new_header{}.bytes() + text);
    EXPECT_EQ(printed([&] {
                  for (const char *nowhere : {static_cast<const char *>(nullptr), "/tmp/none"}) {
                      EXPECT_EQ(get_pack_head(nowhere, &old), 0);
                      EXPECT_EQ(get_pack_head_new(nowhere, &head), 0);
                  }
                  EXPECT_EQ(get_pack_head("/tmp", &old), 0);
                  EXPECT_EQ(get_pack_head_new("/tmp", &head), 0);
                  EXPECT_EQ(get_pack_head(path, nullptr), 0);
                  EXPECT_EQ(get_pack_head_new(path, nullptr), 0);
                  EXPECT_EQ(get_magic(nullptr, &magic), 0);
                  EXPECT_EQ(get_magic(path, nullptr), 0);
              }),
              "");
    EXPECT_EQ(head.version_content, nullptr);
}

TEST(header, magic_of_a_file) {
    const std::string longest = "/tmp/" + std::string(122, 'p');
    put_file("/tmp/whole", "\x03\x77\x00\x77rest"s);
    put_file("/tmp/short", "\x03\x77\x00"s);
    put_file(longest, "");
    put_file(longest + "q", "abcd");
    struct {
        std::string path;
        int result;
        const char *line;
        uint32_t magic;
        const char *error;
    } const cases[] = {
        {"/tmp/whole", 1, "ret=4\n", 0x77007703, ""},
        {"/tmp/short", 1, "ret=3\n", 0xee007703, ""},
        {longest, 1, "ret=0\n", 0xeeeeeeee, ""},
        {longest + "q", 0, "", 0xeeeeeeee, "fopen: File name too long\n"},
        {"/tmp/none", 0, "", 0xeeeeeeee, "fopen: No such file or directory\n"},
    };
    for (const auto &[file, result, line, magic, error] : cases) {
        uint32_t read = 0xeeeeeeee;
        std::string lines;
        EXPECT_EQ(complained([&, file = file, result = result] {
                      lines = printed([&] { EXPECT_EQ(get_magic(file.c_str(), &read), result); });
                  }),
                  error);
        EXPECT_EQ(lines, line);
        EXPECT_EQ(read, magic);
    }
}

TEST(header, debug_print_comes_with_the_packages) {
    set_debug_mode(1);
    EXPECT_EQ(debug_flag, 1);
    EXPECT_EQ(debug(2, "not printed"), 0);
}

TEST(header, every_type_is_a_package_type) {
    for (const unsigned type : {0U, 1U, 29U, 65U, 66U, UINT_MAX}) {
        EXPECT_EQ(is_package_type(type), 1);
    }
}

TEST(node_types, names_and_flag_bits) {
    struct {
        int type;
        const char *name;
        uint64_t flag;
    } const cases[] = {{INT_MIN, "", 0},
                       {-1, "", 0},
                       {0, "", 0},
                       {1, "install", 0x1},
                       {4, "rootfs", 0x8},
                       {5, "gnss_board_1", 0x10},
                       {9, "radio_1", 0x100},
                       {14, "gnss_board_5", 0x2000},
                       {24, "gnss_board_15", 0x800000},
                       {28, "dtb2", 0x8000000},
                       {29, "git_version", 0},
                       {30, "update_info", 0x10000000},
                       {31, "renewer", 0x20000000},
                       {33, "md5_file", 0x80000000},
                       {34, "member33", 0x100000000},
                       {65, "member64", 0x8000000000000000},
                       {66, "", 0},
                       {INT_MAX, "", 0}};
    EXPECT_EQ(printed([&] {
                  for (const auto &[type, name, flag] : cases) {
                      EXPECT_STREQ(node_type_to_str(type), name) << type;
                      EXPECT_EQ(node_type_flag(type), flag) << type;
                  }
              }),
              "");
    for (int type = 34; type <= 65; ++type) {
        EXPECT_EQ(node_type_to_str(type), "member" + std::to_string(type - 1));
    }
}

} // namespace
