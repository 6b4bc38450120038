#include "tests/package/sample.h"
#include "tests/support/small_disk.h"
#include "tests/tools/pack_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace std::string_literals;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

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
    for (const char *order :
         {"--only kernel new.bin -C any", "-C any --only kernel new.bin", "-C any new.bin --only 3",
          "--only kernel -C any new.bin", "--only kernel --force new.bin -C any"}) {
        fs::remove_all("/tmp/desk/any");
        EXPECT_EQ(pack("unpack "s + order).status, 0) << order;
        EXPECT_THAT(names_in("/tmp/desk/any"), testing::ElementsAre("kernel.bin")) << order;
    }
    for (const char *arguments : {"--only kernel", "--only kernel 1", "--only new.bin"}) {
        EXPECT_EQ(pack("unpack "s + arguments).status, 2) << arguments;
    }

    const run unknown = pack("unpack new.bin -C none --only kernal");
    EXPECT_EQ(unknown.status, 2);
    const run absent = pack("unpack new.bin -C none --only uboot");
    EXPECT_EQ(absent.status, 1);
    EXPECT_THAT(absent.err, HasSubstr("no node of type uboot"));
    EXPECT_THAT(pack("unpack new.bin --only 70").err, HasSubstr("no node of type 70\n"));
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
    fs::resize_file("/tmp/desk/file", 100000);
    EXPECT_EQ(
        pack("create -o big.bin --version 1.1.1.1 --pn 1 --revision 1 1=new.bin 3=file").status, 0);
    const small_disk disk(size_t{4} * 4096);
    const run full = pack("unpack big.bin -C "s + disk.path);
    EXPECT_EQ(full.status, 3);
    EXPECT_THAT(full.err, HasSubstr("kernel.bin: No space left on device"));
    EXPECT_THAT(names_in(disk.path), testing::ElementsAre("install.sh"));
}

} // namespace
