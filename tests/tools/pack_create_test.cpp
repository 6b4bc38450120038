#include "tests/package/sample.h"
#include "tests/support/small_disk.h"
#include "tests/tools/pack_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/ptrace.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::string_literals;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

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
    put_file("/tmp/desk/twice.json", R"({"nodes": {"3": "script", "kernel": "kernel"}})");
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
        {texts + "kernel=kernel 3=script", 2, "node type \"3\" is given twice"},
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
        {texts + "--manifest twice.json", 2, "node type \"kernel\" is given twice"},
    };
    for (const auto &[arguments, status, message] : cases) {
        const run done = pack("create -o made.bin" + arguments);
        EXPECT_EQ(done.status, status) << arguments;
        EXPECT_THAT(done.err, HasSubstr(message)) << arguments;
        EXPECT_EQ(done.out, "") << arguments;
        EXPECT_EQ(get_file("/tmp/desk/made.bin"), "an older package");
        EXPECT_EQ(names_in("/tmp/desk"), before) << arguments;
    }
    for (const char *time : {"now", "-1", "253402300800", "99999999999999999999"}) {
        const run done = pack("create -o made.bin" + texts, "SOURCE_DATE_EPOCH="s + time);
        EXPECT_EQ(done.status, 2) << time;
        EXPECT_THAT(done.err, HasSubstr("not a number of seconds")) << time;
    }
    EXPECT_EQ(pack("create -o last.bin" + texts, "SOURCE_DATE_EPOCH=253402300799").status, 0);
    EXPECT_EQ(get_file("/tmp/desk/last.bin").substr(65, 8), "99991231");
    EXPECT_EQ(pack("create -o none/made.bin" + texts).status, 3);
    EXPECT_EQ(pack("create -o /tmp" + texts).status, 3);
}

TEST(create, only_a_file_is_replaced) {
    put_sources();
    ASSERT_EQ(mkfifo("/tmp/desk/pipe", 0600), 0);
    fs::create_symlink("/dev/null", "/tmp/desk/link");
    for (const char *name : {"pipe", "link"}) {
        const auto before = fs::symlink_status("/tmp/desk/"s + name).type();
        const run done = pack("create -o "s + name + texts + "kernel=kernel");
        EXPECT_EQ(done.status, 3) << name;
        EXPECT_THAT(done.err, HasSubstr(name));
        EXPECT_EQ(fs::symlink_status("/tmp/desk/"s + name).type(), before) << name;
    }
    EXPECT_THAT(names_in("/tmp/desk"), testing::ElementsAre("kernel", "link", "pipe", "script"));
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

// Starts a package in /tmp/desk and halts the tool (ptrace(2)) at the system call that makes a file
// there.
pid_t tool_that_has_just_made_a_file() {
    const size_t names = names_in("/tmp/desk").size();
    const pid_t tool = fork();
    if (tool == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        execl(RENEWER_PACK, RENEWER_PACK, "create", "-o", "/tmp/desk/made.bin", "--version",
              "1.1.1.1", "--pn", "1", "--revision", "1", "kernel=/tmp/desk/kernel", nullptr);
        _exit(127);
    }
    int status = 0;
    while (waitpid(tool, &status, 0) == tool && WIFSTOPPED(status) &&
           names_in("/tmp/desk").size() == names) {
        ptrace(PTRACE_SYSCALL, tool, nullptr, nullptr);
    }
    return tool;
}

TEST(create, interrupted_leaves_what_was_there) {
    put_file("/tmp/desk/made.bin", "an older package");
    put_file("/tmp/desk/kernel", "");
    fs::resize_file("/tmp/desk/kernel", 1 << 30);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const pid_t tool = tool_that_has_just_made_a_file();
        kill(tool, signal);
        ptrace(PTRACE_DETACH, tool, nullptr, nullptr);
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

} // namespace
