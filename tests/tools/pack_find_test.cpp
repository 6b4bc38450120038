#include "tests/package/sample.h"
#include "tests/tools/pack_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

void put_package(const std::string &name, const std::string &pn, uint32_t version) {
    put_file("/tmp/desk/" + name, sample::old_header{.version = version, .pn = pn}.bytes());
}

const std::string host_1013 = "\x10\x13\x56\x04\x00\x12\x04"s;

TEST(find, says_why) {
    put_file("/tmp/desk/sys", "1234567" + "1013560000000000"s);
    put_package("a/update_abc_b20240523.bin", host_1013, 0x010203);
    put_package("a/update_a.bin", host_1013, 0x010203);
    put_file("/tmp/desk/a/update_sho_b20240523.bin", "short");
    put_file("/tmp/desk/a/update_new_b20240523.bin", sample::new_package());
    const run found = pack("find a --unit sys");
    EXPECT_EQ(found.status, 0) << found.err;
    for (const char *line :
         {"a/update_abc_b20240523.bin: fits, version 1.2.3, the latest so far\n",
          "a/update_a.bin: passed over: the name is not that of a package\n",
          "a/update_sho_b20240523.bin: passed over: no header of 60 bytes can be read\n",
          "a/update_new_b20240523.bin: passed over: the magic is 0x77007703\n"}) {
        EXPECT_THAT(found.out, HasSubstr(line));
    }
    EXPECT_THAT(found.out, testing::EndsWith("found: a/update_abc_b20240523.bin\n"));

    put_package("b/update_bbb_b20240523.bin", "\x10\x16\x56\x04\x00\x12\x04"s, 0x010203);
    const run other = pack("find none b a --unit sys");
    EXPECT_EQ(other.status, 0);
    EXPECT_THAT(
        other.out,
        testing::StartsWith("none: passed over: it cannot be listed, or not be read and written\n"
                            "b/update_bbb_b20240523.bin: ends the search of the directory: "
                            "pn 2/3/17 not fit (digits of the package: 10165604001204)\n"));
    EXPECT_THAT(other.out, testing::EndsWith("found: a/update_abc_b20240523.bin\n"));

    const run nothing = pack("find b --unit sys");
    EXPECT_EQ(nothing.status, 1);
    EXPECT_THAT(nothing.out, testing::EndsWith("found: nothing\n"));
}

TEST(find, versions) {
    put_file("/tmp/desk/sys", "1234567" + "1013560000000000"s);
    put_package("a/update_aaa_b20240523.bin", host_1013, 0x010203);
    put_package("a/update_bbb_b20240523.bin", host_1013, 0x010204);
    put_package("a/update_ccc_b20240523.bin", host_1013, 0x010204);
    const std::string out = pack("find a --unit sys").out;
    EXPECT_THAT(out, HasSubstr("passed over: not later than 1.2.4\n"));
    EXPECT_EQ(out.find("found: a/update_aaa"), std::string::npos);
    put_package("z/update_zer_b20240523.bin", host_1013, 0);
    EXPECT_EQ(pack("find z --unit sys").status, 1);
}

TEST(find, hardware_inputs) {
    put_file("/tmp/desk/sys", "1234567" + "1180"s);
    put_package("a/update_abc_b20240523.bin", "\x11\x80\x00\x00\x00\x00\x04"s, 0x02000f);
    const run unknown = pack("find a --unit sys");
    EXPECT_EQ(unknown.status, 0);
    EXPECT_THAT(unknown.out, HasSubstr("if not all presence inputs of the unit read 0"));
    EXPECT_EQ(pack("find a --unit sys --inputs 010").status, 0);
    const run absent = pack("find a --unit sys --inputs 000");
    EXPECT_EQ(absent.status, 1);
    EXPECT_THAT(absent.out, HasSubstr("ends the search of the directory: version 2.0.15 is too "
                                      "old for the unit's hardware, which needs 2.0.16"));
    EXPECT_EQ(pack("find a --unit sys --inputs 00").status, 2);
    put_file("/tmp/desk/empty", "");
    for (const char *unit : {"none", "a", "empty"}) {
        const run unread = pack("find a --unit "s + unit);
        EXPECT_EQ(unread.status, 3) << unit;
        EXPECT_THAT(unread.err, HasSubstr(unit));
    }
}

} // namespace
