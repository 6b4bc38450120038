#include "tests/package/sample.h"
#include "tests/tools/pack_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

TEST(show, text_and_json) {
    put_file("/tmp/desk/new.bin", sample::new_package());
    put_file("/tmp/desk/old.bin", sample::old_package());
    EXPECT_THAT(pack("show new.bin").out,
                testing::AllOf(testing::StartsWith("magic          : 0x77007703\n"),
                               testing::EndsWith("node 01  :  type(           kernel ),  "
                                                 "offset( 144 ), size( 8 )\n")));
    EXPECT_THAT(pack("show old.bin").out, testing::StartsWith("magic    : 0x77007700\n"));
    const run json = pack("show --json new.bin");
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(json.out, R"({
  "layout": "new",
  "magic": "0x77007703",
  "md5": "50738720572f56a02f1d33910b383c4d",
  "version": "1.1.4.0",
  "pn": "101356340012",
  "revision": "1a2b3c4d",
  "date": "2024-05-23",
  "time": "09:05:01",
  "head_len": 108,
  "head_version": 1,
  "count": 2,
  "flag": "0x5",
  "nodes": [
    {
      "type": 1,
      "name": "install",
      "file": "install.sh",
      "offset": 136,
      "size": 5
    },
    {
      "type": 3,
      "name": "kernel",
      "file": "kernel.bin",
      "offset": 144,
      "size": 8
    }
  ],
  "defects": []
}
)");
    EXPECT_THAT(pack("show --json old.bin").out,
                testing::AllOf(HasSubstr(R"("layout": "old")"), HasSubstr(R"("pn": "12345678")"),
                               HasSubstr(R"("version": "1.2.3")"),
                               HasSubstr(R"("date": "2024-05-23")"),
                               HasSubstr(R"("time": "09:05:01")")));
}

TEST(show, damaged_files) {
    put_file("/tmp/desk/cut.bin", sample::new_package().substr(0, 130));
    put_file("/tmp/desk/none.bin", "no package");
    EXPECT_EQ(pack("show cut.bin").status, 1);
    EXPECT_EQ(pack("show --json cut.bin").status, 1);
    const run refused = pack("show none.bin");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("none.bin: not a package"));
    EXPECT_EQ(pack("show nowhere").status, 3);
    put_file("/tmp/desk/bytes.bin",
             sample::new_header{.pn = "\xff\x1b[2J"}.bytes() + "1.1.4.0\0\0\0\0\0"s);
    const run json = pack("show --json bytes.bin");
    EXPECT_EQ(json.out.find('\x1b'), std::string::npos);
    EXPECT_THAT(json.out, HasSubstr("\\u001b[2J"));
}

TEST(show, does_not_wait_for_the_writer_of_a_pipe) {
    std::filesystem::create_directories("/tmp/desk");
    ASSERT_EQ(mkfifo("/tmp/desk/pipe", 0600), 0);
    for (const char *command : {"show", "show --json", "check", "unpack"}) {
        EXPECT_EQ(pack(command + " pipe"s, "timeout 10").status, 3) << command;
    }
}

TEST(types, all_of_them) {
    const run done = pack("types");
    EXPECT_EQ(done.status, 0);
    EXPECT_EQ(std::count(done.out.begin(), done.out.end(), '\n'), 66);
    for (const char *line : {"   1         0  install        install.sh\n",
                             "  29      none  git_version    (in the header)\n",
                             "  33        31  md5_file       md5_file.bin\n",
                             "  65        63  member64       member64.bin\n"}) {
        EXPECT_THAT(done.out, HasSubstr(line));
    }
}

TEST(usage, statuses) {
    struct {
        const char *arguments;
        int status;
    } const cases[] = {{"", 2},        {"--help", 0},       {"--version", 0}, {"polish", 2},
                       {"check", 2},   {"check --help", 0}, {"show", 2},      {"show a b", 2},
                       {"unpack", 2},  {"create", 2},       {"find a", 2},    {"types more", 2},
                       {"--colour", 2}};
    for (const auto &[arguments, status] : cases) {
        EXPECT_EQ(pack(arguments).status, status) << arguments;
    }
    EXPECT_THAT(pack("--version").out, testing::StartsWith("renewer-pack 1."));
    EXPECT_THAT(pack("polish").err, HasSubstr("no command \"polish\""));
}

TEST(usage, lost_output_is_told) {
    put_file("/tmp/desk/new.bin", sample::new_package());
    put_file("/tmp/desk/sys", "1234567");
    put_file("/tmp/desk/bad.bin", "bad");
    for (const char *arguments :
         {"show new.bin", "show --json new.bin", "check new.bin", "check bad.bin", "unpack new.bin",
          "create -o made.bin --version 1.1.4.0 --pn 1 --revision 1 kernel=sys",
          "find . --unit sys", "types", "--help", "--version"}) {
        const run lost = pack(arguments, "to_full() { \"$@\" >/dev/full; }; to_full");
        EXPECT_EQ(lost.status, 3) << arguments;
        EXPECT_THAT(lost.err, HasSubstr("standard output could not be written")) << arguments;
    }
}

} // namespace
