#include "tests/package/sample.h"
#include "tests/tools/pack_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/resource.h>

using namespace std::string_literals;
using testing::HasSubstr;

namespace {

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

TEST(check, more_nodes_than_a_unit_takes) {
    const auto table = [](uint32_t count) {
        std::string nodes;
        for (uint32_t i = 0; i < count; ++i) {
            nodes += sample::node(1, 0, 0);
        }
        return sample::old_header{.count = count}.bytes() + nodes;
    };
    put_file("/tmp/desk/most.bin", table(65536));
    EXPECT_THAT(pack("check most.bin").out, testing::Not(HasSubstr("records")));
    put_file("/tmp/desk/more.bin", table(65537));
    EXPECT_THAT(pack("check more.bin").out,
                HasSubstr("the node table has 65537 records, a unit takes at most 65536\n"));
    put_file("/tmp/desk/vast.bin", sample::old_header{.count = 89'000'000}.bytes());
    std::filesystem::resize_file("/tmp/desk/vast.bin", 1 << 30);
    const run vast = pack("show vast.bin");
    EXPECT_EQ(vast.status, 1);
    EXPECT_THAT(vast.err, HasSubstr("has 89000000 records"));
    rusage used;
    ASSERT_EQ(getrusage(RUSAGE_CHILDREN, &used), 0);
    EXPECT_LT(used.ru_maxrss, 200'000); // KiB
}

TEST(check, tells_of_twenty_defects) {
    for (const auto &[nodes, end] :
         {std::pair(19, "has no name\n"), std::pair(22, "; and 3 more\n")}) {
        std::string content = sample::old_header{.count = static_cast<uint32_t>(nodes)}.bytes();
        for (int i = 0; i < nodes; ++i) {
            content += sample::node(70, 0, 0);
        }
        put_file("/tmp/desk/bad.bin", content);
        const std::string out = pack("check bad.bin").out; // the digest is wrong, too
        EXPECT_THAT(out, testing::EndsWith(end));
        EXPECT_EQ(std::count(out.begin(), out.end(), ';'), nodes == 19 ? 19 : 20);
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

} // namespace
