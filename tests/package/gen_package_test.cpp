#include "package/package.h"

#include "tests/package/sample.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <ctime>

using namespace renewer;
using namespace std::string_literals;

namespace {

constexpr const char *path = "/tmp/package.bin";

// A source path by node type; null leaves the type out.
using sources = std::array<const char *, 66>;

int generate(const sources &s) {
    return gen_package(2, 0, 16, 1, "1a2b3c4d", "101356340012", s[1], s[2], s[3], s[4], s[5], s[6],
                       s[7], s[8], s[9], s[10], path, s[11], s[12], s[13], s[14], s[15], s[16],
                       s[17], s[18], s[19], s[20], s[21], s[22], s[23], s[24], s[25], s[26], s[27],
                       s[28], s[30], s[31], s[32], s[33], s[34], s[35], s[36], s[37], s[38], s[39],
                       s[40], s[41], s[42], s[43], s[44], s[45], s[46], s[47], s[48], s[49], s[50],
                       s[51], s[52], s[53], s[54], s[55], s[56], s[57], s[58], s[59], s[60], s[61],
                       s[62], s[63], s[64], s[65]);
}

// Each of the 64 arguments is packed as the node of its own type and unpacked under its own name,
// in a thread with a small stack.
TEST(gen_package, all_types_at_once) {
    std::array<std::string, 66> files;
    sources given = {};
    for (size_t type = 1; type < files.size(); ++type) {
        if (type != 29) {
            files[type] = "/tmp/source" + std::to_string(type);
            put_file(files[type], "content of type " + std::to_string(type));
            given[type] = files[type].c_str();
        }
    }
    const std::string lines =
        printed([&] { on_small_stack([&] { EXPECT_EQ(generate(given), 1); }); });
    const std::string bytes = get_file(path);
    EXPECT_EQ(bytes.substr(88, 12),
              sample::word(64) + sample::word(0xffffffff) + sample::word(0xffffffff));
    printed([] {
        on_small_stack([] {
            EXPECT_EQ(validate_package_new(path), 1);
            EXPECT_EQ(unpack_package_new(path, "/tmp/out"), 1);
        });
    });
    for (size_t type = 1; type < files.size(); ++type) {
        const std::string out = "/tmp/out/"s + node_type_strs[type] + (type == 1 ? ".sh" : ".bin");
        EXPECT_EQ(get_file(out), type == 29 ? "" : "content of type " + std::to_string(type));
    }

    EXPECT_TRUE(lines.starts_with("iMainVersion(2) iSubVersion(0) iReversion(16) itypeVersion\n"
                                  "header len : 112 , nodes len : 768\nmd5 : "))
        << lines;
}

TEST(gen_package, stamped_with_the_local_time) {
    setenv("TZ", "XYZ-05:30", 1);
    tzset();
    const time_t before = time(nullptr);
    printed([] { EXPECT_EQ(generate({}), 1); });
    const time_t after = time(nullptr);
    const std::string bytes = get_file(path);
    const auto stamp_of = [](time_t moment) {
        moment += 5 * 3600 + 30 * 60;
        struct tm parts;
        gmtime_r(&moment, &parts);
        char text[32];
        const size_t length = strftime(text, sizeof(text), "%Y%m%d %H.%M.%S", &parts);
        return std::string(text, length);
    };
    const std::string stamp = bytes.substr(65, 8) + " " + bytes.substr(76, 8);
    EXPECT_LE(stamp_of(before), stamp);
    EXPECT_LE(stamp, stamp_of(after));
    EXPECT_EQ(bytes.substr(73, 3), "\0\0\0"s);
    EXPECT_EQ(bytes.substr(84, 4), "\0\0\0\0"s);
}

} // namespace
