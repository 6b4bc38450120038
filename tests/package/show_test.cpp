#include "package/package.h"

#include "tests/package/sample.h"
#include "tests/support/files.h"
#include "tests/support/piped.h"
#include "tests/support/printed.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace renewer;
using namespace std::string_literals;

namespace {

constexpr const char *path = "/tmp/package.bin";
const std::string text = "1.1.4.0\0"s;

std::string old_header_lines(const sample::old_header &bytes) {
    pack_head head = {};
    memcpy(&head, bytes.bytes().data(), sizeof(head));
    return printed([&] { show_header(&head); });
}

// The line that begins with `label`.
std::string line_of(const std::string &lines, const std::string &label) {
    const size_t begin = lines.find(label);
    return begin == std::string::npos ? "" : lines.substr(begin, lines.find('\n', begin) - begin);
}

TEST(show, whole_old_package) {
    put_file(path, sample::old_header{.flag = 0x1f, .count = 2}.bytes() + sample::node(1, 84, 5) +
                       sample::node(31, 0x80000000, 0xffffffff));
    int result = -1;
    EXPECT_EQ(printed([&] { result = show_package_info(path); }),
              "magic    : 0x77007700\n"
              "md5      : a0a1a2a3a4a5a6a7a8a9aaabacadaeaf\n"
              "version  : 1.2.3\n"
              "pn       : 12345678\n"
              "date     : 2024-5-23\n"
              "time     : 09:05:01\n"
              "flag     : 0x1f\n"
              "count    : 2\n"
              "node 00  :  type(          install ),  offset( 84 ), size( 5 )\n"
              "node 01  :  type(          renewer ),  offset( -2147483648 ), size( -1 )\n");
    EXPECT_EQ(result, 1);
}

TEST(show, old_fields_in_their_bits) {
    const std::string ones(16, '\xff');
    struct {
        sample::old_header bytes;
        const char *label;
        const char *line;
    } const cases[] = {
        {{.magic = 0}, "magic", "magic    : 0"},
        {{.version = 0xaaff80fe}, "version", "version  : 255.128.254"},
        {{.pn = "\x12\x34\x56\x78"s, .pnlen = 7}, "pn", "pn       : 1234568"},
        {{.pn = "\x12\x34"s, .pnlen = 1}, "pn", "pn       : 2"},
        {{.pn = ones, .pnlen = 33}, "pn", "pn       : ffffffffffffffffffffffffffffffff"},
        {{.pn = ones, .pnlen = 0xffffffff}, "pn", "pn       : ffffffffffffffffffffffffffffffff"},
        {{.date = 0xffffffff}, "date", "date     : 8388607-15-31"},
        {{.time = 0xffffffff}, "time", "time     : 63:63:31"},
        {{.time = 1U << 5 | 1U << 12 | 0xfff80000U}, "time", "time     : 00:00:00"},
        {{.count = 0xffffffff}, "count", "count    : -1"},
    };
    for (const auto &[bytes, label, line] : cases) {
        EXPECT_EQ(line_of(old_header_lines(bytes), label), line);
    }
}

TEST(show, whole_new_package) {
    put_file(path, sample::new_header{.count = 2, .flag_low = 5}.bytes() + text + sample::word(0) +
                       sample::node(1, 136, 5) + sample::node(66, 144, 0));
    int result = -1;
    const std::string lines = printed([&] { result = show_package_info_new(path); });
    EXPECT_EQ(printed([] { show_package_info_new(piped(get_file(path)).path.c_str()); }), lines);
    EXPECT_EQ(lines, "magic          : 0x77007703\n"
                     "head_len       : 108\n"
                     "head_version   : 1\n"
                     "pnlen          : 12\n"
                     "pn             : 101356340012\n"
                     "version_len    : 8\n"
                     "version_content: 1.1.4.0\n"
                     "git_version    : 1a2b3c4d\n"
                     "date           : 20240523\n"
                     "time           : 09.05.01\n"
                     "flag           : 05\n"
                     "count          : 2\n"
                     "md5            : a0a1a2a3a4a5a6a7a8a9aaabacadaeaf\n"
                     "node 00  :  type(          install ),  offset( 136 ), size( 5 )\n"
                     "node 01  :  type(                  ),  offset( 144 ), size( 0 )\n");
    EXPECT_EQ(result, 1);
}

// The table follows the fill and the reserved word, whatever the length of the version text.
TEST(show, node_table_behind_each_length_of_version_text) {
    struct {
        const char *version;
        size_t table;
    } const cases[] = {
        {"1.1.4.0", 112}, {"10.2.3.4", 116}, {"10.22.33.44", 116}, {"111.22.33.44", 120}};
    for (const auto &[version, table] : cases) {
        const auto length = static_cast<uint32_t>(strlen(version) + 1);
        std::string file =
            sample::new_header{.head_len = 100 + length, .version_len = length, .count = 1}
                .bytes() +
            version;
        file.resize(table, '\0');
        put_file(path, file + sample::node(3, 7, 8));
        const std::string lines = printed([] { EXPECT_EQ(show_package_info_new(path), 1); });
        EXPECT_EQ(line_of(lines, "version_content"), "version_content: "s + version);
        EXPECT_EQ(line_of(lines, "node"),
                  "node 00  :  type(           kernel ),  offset( 7 ), size( 8 )");
    }
}

// A damaged field without a terminator ends with its field, not somewhere in the next ones.
TEST(show, unterminated_texts) {
    pack_head_new head = {};
    const sample::new_header bytes{.pn = std::string(20, 'p'),
                                   .version_len = 3,
                                   .git_version = std::string(9, 'g'),
                                   .date = std::string(11, 'd'),
                                   .time = std::string(12, 't'),
                                   .flag_high = 0x80000000};
    memcpy(&head, bytes.bytes().data(), pack_head_new_size);
    std::string version = "1.2.3.4";
    head.version_content = version.data();
    const std::string lines = printed([&] { show_header_new(&head); });
    EXPECT_EQ(line_of(lines, "pn  "), "pn             : " + std::string(20, 'p'));
    EXPECT_EQ(line_of(lines, "version_content"), "version_content: 1.2.3.4");
    EXPECT_EQ(line_of(lines, "git_version"), "git_version    : " + std::string(9, 'g'));
    EXPECT_EQ(line_of(lines, "date"), "date           : " + std::string(11, 'd'));
    EXPECT_EQ(line_of(lines, "time"), "time           : " + std::string(12, 't'));
    EXPECT_EQ(line_of(lines, "flag"), "flag           : 8000000000000000");
}

TEST(show, null_records_print_nothing) {
    pack_head old = {};
    pack_head_new head = {};
    const pack_node node = {};
    old.count = head.count = 1;
    EXPECT_EQ(printed([&] {
                  show_header(nullptr);
                  show_header_new(nullptr);
                  show_nodes(nullptr, &node);
                  show_nodes(&old, nullptr);
                  show_nodes_new(nullptr, &node);
                  show_nodes_new(&head, nullptr);
              }),
              "");
    EXPECT_EQ(line_of(printed([&] { show_header_new(&head); }), "version_c"), "version_content: ");
}

// Counts whose table the file cannot hold; 0x15555556 records are 8 bytes in 32 bits.
TEST(show, table_beyond_the_end_of_the_file) {
    struct {
        uint32_t count;
        const char *message;
    } const cases[] = {
        {2, "ret( 23 ) <  nodes( 24 )\n"},
        {0x15555556, "ret( 23 ) <  nodes( 4294967304 )\n"},
    };
    const std::string table = sample::node(1, 0, 0) + sample::node(2, 0, 0);
    const std::string short_table = table.substr(0, 23);
    for (const auto &[count, message] : cases) {
        put_file(path, sample::old_header{.count = count}.bytes() + short_table);
        EXPECT_EQ(printed([] { EXPECT_EQ(show_package_info(path), 0); }), message);
        put_file(path,
                 sample::new_header{.count = count}.bytes() + text + sample::word(0) + short_table);
        EXPECT_EQ(printed([] { EXPECT_EQ(show_package_info_new(path), 0); }), message);
    }
}

TEST(show, table_placed_beyond_the_end_of_the_file) {
    for (const uint32_t head_len : {1000U, 0x7fffffffU, 0xfffffffcU, 0xffffffffU}) {
        put_file(path, sample::new_header{.head_len = head_len, .count = 1}.bytes() + text +
                           std::string(100, 'x'));
        EXPECT_EQ(printed([] { EXPECT_EQ(show_package_info_new(path), 0); }),
                  "ret( 0 ) <  nodes( 12 )\n")
            << head_len;
    }
}

TEST(show, more_nodes_than_any_package_has) {
    const std::string nodes((65536 + 1) * 12, '\0');
    put_file(path, sample::old_header{.count = 65537}.bytes() + nodes);
    EXPECT_EQ(printed([] { EXPECT_EQ(show_package_info(path), 0); }), "");
    put_file(path, sample::old_header{.count = 65536}.bytes() + nodes);
    printed([] { EXPECT_EQ(show_package_info(path), 1); });
}

TEST(show, files_that_are_no_package) {
    const std::string old_bytes = sample::old_header{}.bytes();
    const std::string new_bytes = sample::new_header{}.bytes();
    const auto nothing_shown = [](const char *file) {
        return printed([file] {
            EXPECT_EQ(show_package_info(file), 0);
            EXPECT_EQ(show_package_info_new(file), 0);
        });
    };
    EXPECT_EQ(nothing_shown(nullptr), "");
    EXPECT_EQ(nothing_shown("/tmp/none"), "");
    for (const auto &content : {""s, old_bytes.substr(0, 59), new_bytes.substr(0, 50)}) {
        put_file(path, content);
        EXPECT_EQ(nothing_shown(path), "") << content.size();
    }
    put_file(path, new_bytes);
    EXPECT_EQ(printed([] { EXPECT_EQ(show_package_info_new(path), 0); }), "");
}

} // namespace
