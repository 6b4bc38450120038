#include "tests/package/sample.h"
#include "tests/support/files.h"
#include "tests/support/small_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::string_literals;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

// A run of renewer-pack in the directory /tmp/desk.
struct run {
    int status = -1; // exit status, 128 plus the number of the signal that ended it
    std::string out;
    std::string err;
};

int status_of(int wait_status) {
    return WIFEXITED(wait_status) ? WEXITSTATUS(wait_status) : 128 + WTERMSIG(wait_status);
}

run pack(const std::string &arguments, const std::string &before = "") {
    fs::create_directories("/tmp/desk");
    const std::string line = "cd /tmp/desk && " + before + " " RENEWER_PACK " " + arguments +
                             " >/tmp/out 2>/tmp/err </dev/null";
    run done;
    done.status = status_of(system(line.c_str()));
    done.out = get_file("/tmp/out");
    done.err = get_file("/tmp/err");
    return done;
}

std::vector<std::string> names_in(const fs::path &directory) {
    std::vector<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void put_sources() {
    put_file("/tmp/desk/script", "true\n");
    put_file("/tmp/desk/kernel", "kernel!\n");
}

// 23 May 2024, 09:05:01 UTC.
const std::string epoch = "SOURCE_DATE_EPOCH=1716455101";
const std::string texts = " --version 1.1.4.0 --pn 101356340012 --revision 1a2b3c4d ";

TEST(create, package_made_by_hand) {
    put_sources();
    for (const char *zone : {"UTC", "XYZ-05:30"}) {
        const run done = pack("create -o made.bin" + texts + "kernel=kernel 1=script",
                              epoch + " TZ=" + zone + " ");
        EXPECT_EQ(done.status, 0);
        EXPECT_EQ(done.out, "made.bin  152 bytes, 2 nodes, md5 50738720572f56a02f1d33910b383c4d\n");
        EXPECT_EQ(done.err, "");
        EXPECT_EQ(get_file("/tmp/desk/made.bin"), sample::new_package());
    }
    EXPECT_THAT(names_in("/tmp/desk"), testing::ElementsAre("kernel", "made.bin", "script"));
}

TEST(create, from_a_manifest) {
    put_file("/tmp/desk/plan/script", "true\n");
    put_file("/tmp/desk/plan/other", "another kernel");
    put_file("/tmp/desk/kernel", "kernel!\n");
    put_file("/tmp/desk/plan/manifest.json",
             R"({"version": "1.1.4.0", "pn": "9", "revision": "1a2b3c4d",
                 "nodes": {"install": "script", "kernel": "other"}})");
    const run done = pack("create -o made.bin --manifest plan/manifest.json --pn 101356340012 "
                          "kernel=kernel",
                          epoch);
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(get_file("/tmp/desk/made.bin"), sample::new_package());
}

TEST(create, refused_before_anything_is_written) {
    put_sources();
    put_file("/tmp/desk/empty", "");
    put_file("/tmp/desk/huge", "");
    fs::resize_file("/tmp/desk/huge", 0x100000000);
    put_file("/tmp/desk/array.json", "[]");
    put_file("/tmp/desk/broken.json", "{");
    put_file("/tmp/desk/member.json", R"({"serial": "1"})");
    put_file("/tmp/desk/number.json", R"({"pn": 12})");
    put_file("/tmp/desk/type.json", R"({"nodes": {"kernal": "kernel"}})");
    put_file("/tmp/desk/made.bin", "an older package");
    const auto before = names_in("/tmp/desk");
    struct {
        std::string arguments;
        int status;
        const char *message;
    } const cases[] = {
        {" --version 1.1.4 --pn 1 --revision 1", 2, "\"1.1.4\" is not four numbers"},
        {" --version 1.1.4.0.0 --pn 1 --revision 1", 2, "is not four numbers"},
        {" --version 1.1.4.-1 --pn 1 --revision 1", 2, "is not four numbers"},
        {" --version 1..4.0 --pn 1 --revision 1", 2, "is not four numbers"},
        {" --version 1.1.4.4294967296 --pn 1 --revision 1", 2, "is not four numbers"},
        {" --version 1000.1000.1000.0 --pn 1 --revision 1", 2, "room for 14"},
        {" --version 1.1.4.0 --pn 12345678901234567890 --revision 1", 2, "room for 19"},
        {" --version 1.1.4.0 --pn 1 --revision 123456789", 2, "room for 8"},
        {" --version 1.1.4.0 --pn 1", 2, "are needed"},
        {texts + "kernel", 2, "\"kernel\" is not TYPE=FILE"},
        {texts + "kernel=", 2, "is not TYPE=FILE"},
        {texts + "kernal=kernel", 2, "no node type \"kernal\""},
        {texts + "66=kernel", 2, "no node type \"66\""},
        {texts + "git_version=kernel", 2, "carries no file"},
        {texts + "0=kernel", 2, "carries no file"},
        {texts + "kernel=empty", 2, "empty is empty"},
        {texts + "kernel=/tmp", 2, "/tmp is not a file"},
        {texts + "kernel=huge", 2, "huge does not fit"},
        {texts + "kernel=none", 3, "none: No such file"},
        {texts + "--manifest none.json", 3, "No such file"},
        {texts + "--manifest array.json", 2, "it is not an object"},
        {texts + "--manifest broken.json", 2, "is not JSON"},
        {texts + "--manifest member.json", 2, "\"serial\""},
        {texts + "--manifest number.json", 2, "are texts"},
        {texts + "--manifest type.json", 2, "no node type \"kernal\""},
    };
    for (const auto &[arguments, status, message] : cases) {
        const run done = pack("create -o made.bin" + arguments);
        EXPECT_EQ(done.status, status) << arguments;
        EXPECT_THAT(done.err, HasSubstr(message)) << arguments;
        EXPECT_EQ(done.out, "") << arguments;
        EXPECT_EQ(get_file("/tmp/desk/made.bin"), "an older package");
        EXPECT_EQ(names_in("/tmp/desk"), before) << arguments;
    }
    EXPECT_EQ(pack("create -o made.bin" + texts, "SOURCE_DATE_EPOCH=now").status, 2);
    EXPECT_EQ(pack("create -o none/made.bin" + texts).status, 3);
    EXPECT_EQ(pack("create -o /tmp" + texts).status, 3);
}

TEST(create, full_disk_leaves_what_was_there) {
    put_file("/tmp/desk/kernel", std::string(100000, 'k'));
    for (const size_t pages : {4U, 30U}) {
        const small_disk disk(pages * 4096);
        const std::string made = disk.path + "/made.bin"s;
        put_file(made, "an older package");
        const run done = pack("create -o " + made + texts + "kernel=kernel");
        if (pages == 4) {
            EXPECT_EQ(done.status, 3);
            EXPECT_THAT(done.err, HasSubstr("could not be written: No space left on device"));
            EXPECT_EQ(get_file(made), "an older package");
        } else {
            EXPECT_EQ(done.status, 0) << done.err;
        }
        EXPECT_THAT(names_in(disk.path), testing::ElementsAre("made.bin"));
    }
}

// Waits until `directory` holds a file besides those that were there.
void wait_for_new_file(const fs::path &directory, size_t names) {
    while (names_in(directory).size() == names) {
        std::this_thread::yield();
    }
}

TEST(create, interrupted_leaves_what_was_there) {
    put_file("/tmp/desk/made.bin", "an older package");
    put_file("/tmp/desk/kernel", "");
    fs::resize_file("/tmp/desk/kernel", 1 << 30);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::string output = "/tmp/desk/made.bin";
        std::string source = "kernel=/tmp/desk/kernel";
        const char *const arguments[] = {RENEWER_PACK, "create",  "-o",           output.c_str(),
                                         "--version",  "1.1.1.1", "--pn",         "1",
                                         "--revision", "1",       source.c_str(), nullptr};
        pid_t tool = 0;
        ASSERT_EQ(posix_spawn(&tool, RENEWER_PACK, nullptr, nullptr,
                              const_cast<char *const *>(arguments), environ),
                  0);
        wait_for_new_file("/tmp/desk", 2);
        kill(tool, signal);
        int status = 0;
        waitpid(tool, &status, 0);
        EXPECT_EQ(status_of(status), 128 + signal);
        EXPECT_THAT(names_in("/tmp/desk"), testing::ElementsAre("kernel", "made.bin"));
        EXPECT_EQ(get_file("/tmp/desk/made.bin"), "an older package");
    }
}

TEST(create, mode_of_the_package_is_that_of_any_new_file) {
    put_sources();
    EXPECT_EQ(pack("create -o made.bin" + texts, "umask 027 &&").status, 0);
    struct stat about;
    ASSERT_EQ(stat("/tmp/desk/made.bin", &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0640U);
}

// Bytes with what `replacement` holds at `offset`.
std::string with(std::string bytes, size_t offset, const std::string &replacement) {
    return bytes.replace(offset, replacement.size(), replacement);
}

TEST(check, says_what_is_wrong) {
    const std::string good = sample::new_package();
    struct {
        std::string content;
        std::vector<std::string> words;
    } const cases[] = {
        {"", {"not a package: it has 0 bytes"}},
        {"\x02\x77\x00\x77"s + good.substr(4), {"not a package: its magic is 0x77007702"}},
        {good.substr(0, 50), {"the header is short: 50 of 100 bytes"}},
        {sample::old_package().substr(0, 59), {"the header is short: 59 of 60 bytes"}},
        {good.substr(0, 104),
         {"the version text of 8 bytes is short: the file holds 4",
          "the node table of 2 records takes 24 bytes, the file holds 0"}},
        {good.substr(0, 130), {"the node table of 2 records takes 24 bytes, the file holds 18"}},
        {with(good, 150, "L"),
         {"the digest is ", ", the header says 50738720572f56a02f1d33910b383c4d"}},
        {good.substr(0, 151), {"node 1 (kernel) ends at 152, past the end of the file at 151"}},
        {with(good, 116, sample::word(141)), {"node 0 (install) and node 1 (kernel) overlap"}},
        {with(good, 116, sample::word(112)),
         {"node 0 (install) begins at 112, before the node table ends at 136"}},
        {with(good, 124, sample::word(70)),
         {"node 1 has type 70, which has no name", "the flag is 0x5, the nodes make it 0x1"}},
        {with(good, 96, sample::word(1)), {"the flag is 0x100000005, the nodes make it 0x5"}},
        {with(good, 143, "x"), {"the padding behind node 0 (install) is not zero"}},
        {with(good, 109, "x"), {"the padding behind the version text is not zero"}},
        {with(good, 20, sample::word(112)),
         {"the header length 112 does not match a version text of 8 bytes"}},
        {with(good, 28, sample::word(13)),
         {"the part number has 12 characters, the header says 13"}},
        {with(good, 56, "123456789"), {"the revision is not terminated"}},
        {with(good, 107, "x"), {"the version text is not terminated"}},
        {with(good, 88, sample::word(0xffffffff)),
         {"the node table of 4294967295 records takes 51539607540 bytes, the file holds 40"}},
        {with(good, 20, sample::word(0xffffffff)), {"does not match", "the file holds 0"}},
        {with(good, 52, sample::word(0xffffffff)), {"the version text of 4294967295 bytes"}},
    };
    for (const auto &[content, words] : cases) {
        put_file("/tmp/desk/package.bin", content);
        const run done = pack("check package.bin");
        EXPECT_EQ(done.status, 1) << words[0];
        EXPECT_THAT(done.out, testing::StartsWith("package.bin: refused: "));
        EXPECT_EQ(std::count(done.out.begin(), done.out.end(), '\n'), 1);
        for (const std::string &word : words) {
            EXPECT_THAT(done.out, HasSubstr(word));
        }
        EXPECT_EQ(done.err, "");
    }
}

TEST(check, several_files) {
    put_file("/tmp/desk/new.bin", sample::new_package());
    put_file("/tmp/desk/first.bin", sample::new_package(0x77007700));
    put_file("/tmp/desk/old.bin", sample::old_package(7));
    put_file("/tmp/desk/bad.bin", "nothing");
    const run sound = pack("check new.bin first.bin old.bin");
    EXPECT_EQ(sound.status, 0);
    EXPECT_EQ(sound.out, "new.bin: good\nfirst.bin: good\nold.bin: good\n");
    const run mixed = pack("check bad.bin new.bin");
    EXPECT_EQ(mixed.status, 1);
    EXPECT_EQ(mixed.out, "bad.bin: refused: not a package: its magic is 0x68746f6e\n"
                         "new.bin: good\n");
    const run missing = pack("check none.bin bad.bin new.bin /tmp");
    EXPECT_EQ(missing.status, 3);
    EXPECT_THAT(missing.out, testing::StartsWith("none.bin: cannot be read: No such file"));
    EXPECT_THAT(missing.out, HasSubstr("new.bin: good\n/tmp: cannot be read: Is a directory\n"));
}

TEST(unpack, chosen_nodes_of_a_sound_package) {
    put_file("/tmp/desk/new.bin", sample::new_package());
    const run all = pack("unpack new.bin -C 'two words/out'");
    EXPECT_EQ(all.status, 0) << all.err;
    EXPECT_EQ(all.out, "two words/out/install.sh  5 bytes\ntwo words/out/kernel.bin  8 bytes\n");
    EXPECT_EQ(get_file("/tmp/desk/two words/out/install.sh"), "true\n");
    EXPECT_EQ(get_file("/tmp/desk/two words/out/kernel.bin"), "kernel!\n");
    struct stat about;
    ASSERT_EQ(stat("/tmp/desk/two words/out/install.sh", &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0777U);

    EXPECT_EQ(pack("unpack new.bin --only kernel -C one").status, 0);
    EXPECT_THAT(names_in("/tmp/desk/one"), testing::ElementsAre("kernel.bin"));
    EXPECT_EQ(pack("unpack new.bin -C both --only 1 kernel").status, 0);
    EXPECT_EQ(names_in("/tmp/desk/both").size(), 2U);

    const run unknown = pack("unpack new.bin -C none --only kernal");
    EXPECT_EQ(unknown.status, 2);
    const run absent = pack("unpack new.bin -C none --only uboot");
    EXPECT_EQ(absent.status, 1);
    EXPECT_THAT(absent.err, HasSubstr("no node of type uboot"));
    EXPECT_FALSE(fs::exists("/tmp/desk/none"));
}

TEST(unpack, damaged_package_only_by_force) {
    put_file("/tmp/desk/bad.bin", sample::new_package().substr(0, 149));
    const run refused = pack("unpack bad.bin -C out");
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.err, HasSubstr("bad.bin: the digest is "));
    EXPECT_THAT(refused.err, HasSubstr("nothing was unpacked"));
    EXPECT_FALSE(fs::exists("/tmp/desk/out"));
    const run forced = pack("unpack bad.bin -C out --force");
    EXPECT_EQ(forced.status, 0);
    EXPECT_EQ(forced.out, "out/install.sh  5 bytes\nout/kernel.bin  5 bytes, cut short\n");
    EXPECT_EQ(get_file("/tmp/desk/out/kernel.bin"), "kerne");
}

TEST(unpack, what_the_system_refuses) {
    put_file("/tmp/desk/new.bin", sample::new_package());
    put_file("/tmp/desk/file", "");
    EXPECT_EQ(pack("unpack none.bin").status, 3);
    EXPECT_EQ(pack("unpack new.bin -C file/out").status, 3);
    fs::create_directories("/tmp/desk/taken/install.sh");
    EXPECT_EQ(pack("unpack new.bin -C taken").status, 3);
}

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
    EXPECT_EQ(pack("show none.bin").status, 1);
    EXPECT_EQ(pack("show nowhere").status, 3);
    put_file("/tmp/desk/bytes.bin",
             sample::new_header{.pn = "\xff\x1b[2J"}.bytes() + "1.1.4.0\0\0\0\0\0"s);
    const run json = pack("show --json bytes.bin");
    EXPECT_EQ(json.out.find('\x1b'), std::string::npos);
    EXPECT_THAT(json.out, HasSubstr("\\u001b[2J"));
}

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
    EXPECT_EQ(pack("find a --unit none").status, 3);
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
}

} // namespace
