#include "package/package.h"

#include "tests/package/sample.h"
#include "tests/support/failing_medium.h"
#include "tests/support/files.h"
#include "tests/support/printed.h"
#include "tests/support/small_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <thread>
#include <utility>
#include <vector>

using namespace renewer;
using namespace std::string_literals;
namespace fs = std::filesystem;

namespace {

constexpr const char *path = "/tmp/package.bin";

// The position that the library's streams report.
int64_t stream_offset = 0;

// 23 May 2024, 09:05:01.
constexpr struct tm made = {.tm_sec = 1,
                            .tm_min = 5,
                            .tm_hour = 9,
                            .tm_mday = 23,
                            .tm_mon = 4,
                            .tm_year = 124,
                            .tm_wday = 0,
                            .tm_yday = 0,
                            .tm_isdst = 0,
                            .tm_gmtoff = 0,
                            .tm_zone = nullptr};

package_plan plan_of(const std::vector<std::pair<int, const char *>> &sources) {
    package_plan plan = {.version = {1, 1, 4, 0},
                         .git_version = "1a2b3c4d",
                         .pn = "101356340012",
                         .made = made,
                         .sources = {}};
    for (const auto &[type, source] : sources) {
        plan.sources[static_cast<size_t>(type)] = source;
    }
    return plan;
}

struct generated {
    int result = -1;
    std::string lines;
};

generated generate(const package_plan &plan, const char *target = path) {
    generated done;
    done.lines = printed([&] { done.result = write_package(plan, target); });
    return done;
}

int validated(const char *file = path) {
    int result = -1;
    printed([&] { result = validate_package_new(file); });
    return result;
}

uint32_t word_at(const std::string &bytes, size_t offset) {
    uint32_t word = 0;
    memcpy(&word, bytes.data() + offset, sizeof(word));
    return word;
}

// Byte for byte what the format says, with the digest by md5sum.
TEST(generate, package_made_by_hand) {
    put_file("/tmp/script", "true\n");
    put_file("/tmp/kernel", "kernel!\n");
    const generated done = generate(plan_of({{3, "/tmp/kernel"}, {1, "/tmp/script"}}));
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(done.lines, "iMainVersion(1) iSubVersion(1) iReversion(4) itypeVersion\n"
                          "header len : 108 , nodes len : 24\n"
                          "md5 : 50738720572f56a02f1d33910b383c4d\n");
    EXPECT_EQ(get_file(path), sample::new_package());
}

TEST(generate, each_length_of_the_version_text) {
    struct {
        std::array<int, 4> version;
        const char *text;
        uint32_t table;
    } const cases[] = {
        {{1, 1, 4, 0}, "1.1.4.0", 112},         {{10, 2, 3, 4}, "10.2.3.4", 116},
        {{10, 20, 30, 40}, "10.20.30.40", 116}, {{100, 20, 30, 40}, "100.20.30.40", 120},
        {{-1, 0, 0, 0}, "-1.0.0.0", 116},
    };
    put_file("/tmp/script", "true\n");
    for (const auto &[version, text, table] : cases) {
        package_plan plan = plan_of({{1, "/tmp/script"}});
        std::copy(version.begin(), version.end(), plan.version);
        ASSERT_EQ(generate(plan).result, 1) << text;
        const std::string bytes = get_file(path);
        const auto length = static_cast<uint32_t>(strlen(text) + 1);
        EXPECT_EQ(word_at(bytes, 20), 100 + length) << text;
        EXPECT_EQ(word_at(bytes, 52), length) << text;
        EXPECT_EQ(bytes.substr(100, table - 100), sample::field(text, table - 100)) << text;
        EXPECT_EQ(bytes.substr(table, 12), sample::node(1, table + 12, 5)) << text;
        EXPECT_EQ(validated(), 1) << text;
    }
}

TEST(generate, each_padding) {
    for (const uint32_t size : {1U, 2U, 3U, 4U, 5U}) {
        put_file("/tmp/first", std::string(size, 'f'));
        put_file("/tmp/second", "s");
        ASSERT_EQ(generate(plan_of({{2, "/tmp/first"}, {65, "/tmp/second"}})).result, 1);
        const std::string bytes = get_file(path);
        const uint32_t second = 136 + (size + 3) / 4 * 4;
        EXPECT_EQ(bytes.substr(124, 12), sample::node(65, second, 1)) << size;
        EXPECT_EQ(bytes.substr(136),
                  sample::field(std::string(size, 'f'), second - 136) + sample::field("s", 4))
            << size;
        EXPECT_EQ(validated(), 1) << size;
    }
}

TEST(generate, flag_words) {
    struct {
        int type;
        uint32_t low;
        uint32_t high;
    } const cases[] = {{1, 1, 0},           {28, 0x08000000, 0}, {30, 0x10000000, 0},
                       {33, 0x80000000, 0}, {34, 0, 1},          {65, 0, 0x80000000}};
    put_file("/tmp/source", "content");
    for (const auto &[type, low, high] : cases) {
        ASSERT_EQ(generate(plan_of({{type, "/tmp/source"}})).result, 1);
        const std::string bytes = get_file(path);
        EXPECT_EQ(word_at(bytes, 92), low) << type;
        EXPECT_EQ(word_at(bytes, 96), high) << type;
    }
}

TEST(generate, types_that_carry_no_file_are_left_out) {
    put_file("/tmp/source", "content");
    ASSERT_EQ(generate(plan_of({{0, "/tmp/source"}, {29, "/tmp/source"}})).result, 1);
    EXPECT_EQ(get_file(path).size(), 112U);
    EXPECT_EQ(get_file(path).substr(88, 12), std::string(12, '\0')) << "count and flags";
    EXPECT_EQ(validated(), 1);
}

TEST(generate, texts_that_do_not_fit_are_refused_before_the_file_is_made) {
    const std::string pn(20, '1');
    const std::string revision(9, 'a');
    const auto changed = [](auto change) {
        package_plan plan = plan_of({});
        change(plan);
        return plan;
    };
    const package_plan refused[] = {
        changed([&](package_plan &plan) { plan.pn = pn.c_str(); }),
        changed([](package_plan &plan) { plan.pn = nullptr; }),
        changed([&](package_plan &plan) { plan.git_version = revision.c_str(); }),
        changed([](package_plan &plan) { plan.git_version = nullptr; }),
        changed([](package_plan &plan) { plan.version[0] = 123456789; }),
        changed([](package_plan &plan) { plan.made.tm_year = 100000000; }),
    };
    for (const package_plan &plan : refused) {
        const generated done = generate(plan);
        EXPECT_EQ(done.result, 0);
        EXPECT_EQ(done.lines, "");
        EXPECT_FALSE(fs::exists(path));
    }
    const package_plan longest = changed([&](package_plan &plan) {
        plan.pn = pn.c_str() + 1;
        plan.git_version = revision.c_str() + 1;
        plan.version[0] = 12345678;
    });
    EXPECT_EQ(generate(longest).result, 1);
    EXPECT_EQ(get_file(path).substr(32, 20), sample::field(pn.substr(1), 20));
    EXPECT_EQ(get_file(path).substr(56, 9), sample::field(revision.substr(1), 9));
}

TEST(generate, sources_that_cannot_be_packed) {
    put_file("/tmp/script", "true\n");
    put_file("/tmp/empty", "");
    put_file("/tmp/large", "");
    fs::resize_file("/tmp/large", 0x100000000);
    struct {
        const char *source;
        std::string message;
    } const cases[] = {{"/tmp/none", "Error path invalid : /tmp/none\n"},
                       {"/tmp", "Error path invalid : /tmp\n"},
                       {"/tmp/large", "Error path invalid : /tmp/large\n"},
                       {"/tmp/empty", ""}};
    for (const auto &[source, message] : cases) {
        const generated done = generate(plan_of({{1, "/tmp/script"}, {3, source}}));
        EXPECT_EQ(done.result, 0) << source;
        EXPECT_EQ(done.lines,
                  "iMainVersion(1) iSubVersion(1) iReversion(4) itypeVersion\n" + message);
        EXPECT_EQ(get_file(path), "") << source;
        EXPECT_EQ(validated(), 0) << source;
    }
    EXPECT_EQ(generate(plan_of({}), nullptr).result, 0);
    EXPECT_EQ(generate(plan_of({}), "/tmp/none/package").result, 0);
}

// Its table would not match its content. The first source is large enough for the second to
// change while the first is being copied.
TEST(generate, source_that_changes_in_the_meantime) {
    put_file("/tmp/first", "");
    fs::resize_file("/tmp/first", 64 << 20);
    for (const uintmax_t size : {1U, 100U}) {
        put_file(path, "");
        put_file("/tmp/second", "content");
        std::thread change([size] {
            while (fs::file_size(path) == 0) {
                std::this_thread::yield();
            }
            fs::resize_file("/tmp/second", size);
        });
        const generated done = generate(plan_of({{1, "/tmp/first"}, {3, "/tmp/second"}}));
        change.join();
        EXPECT_EQ(done.result, 0) << size;
        EXPECT_EQ(validated(), 0) << size;
    }
}

TEST(generate, source_that_is_the_package_itself) {
    put_file(path, "an older package");
    fs::create_symlink(path, "/tmp/link");
    fs::create_hard_link(path, "/tmp/second_name");
    for (const char *source : {path, "/tmp/link", "/tmp/second_name"}) {
        const generated done = generate(plan_of({{1, "/dev/null"}, {65, source}}));
        EXPECT_EQ(done.result, 0) << source;
        EXPECT_EQ(done.lines, "");
        EXPECT_EQ(get_file(path), "an older package") << source;
    }
}

// While copying the source and at its end, while computing the digest and at its end.
TEST(generate, medium_that_fails) {
    put_file("/tmp/kernel", "kernel!\n");
    for (int reads = 0; reads <= 4; ++reads) {
        reads_that_work = reads;
        const generated done = generate(plan_of({{3, "/tmp/kernel"}}));
        EXPECT_EQ(done.result, reads == 4) << reads;
        EXPECT_EQ(done.lines.find("md5") != std::string::npos, reads == 4) << reads;
    }
}

// The last place where a payload can begin.
TEST(generate, package_beyond_32_bits) {
    put_file("/tmp/kernel", "kernel!\n");
    for (const int64_t place : {0xfffffffcLL, 0x100000000LL}) {
        stream_offset = place - 124;
        EXPECT_EQ(generate(plan_of({{3, "/tmp/kernel"}})).result, place == 0xfffffffcLL);
    }
}

// The disk fills up at one page after the other: in the payloads, the table and the header.
TEST(generate, full_disk_never_leaves_a_valid_package) {
    put_file("/tmp/kernel", std::string(40000, 'k'));
    const std::string target = small_disk::path + "/package"s;
    int completed = 0;
    for (size_t pages = 1; pages <= 12; ++pages) {
        const small_disk disk(pages * 4096);
        const generated done = generate(plan_of({{3, "/tmp/kernel"}}), target.c_str());
        EXPECT_EQ(done.result, validated(target.c_str())) << pages;
        EXPECT_EQ(done.lines.find("md5") != std::string::npos, done.result == 1) << pages;
        completed += done.result;
    }
    EXPECT_EQ(completed, 3);
    EXPECT_EQ(generate(plan_of({}), "/dev/full").result, 0);
}

TEST(generate, helpers) {
    put_file("/tmp/source", "content");
    EXPECT_EQ(printed([] {
                  EXPECT_EQ(get_file_size("/tmp/source"), 7U);
                  EXPECT_EQ(get_file_size(nullptr), 0U);
                  EXPECT_EQ(get_file_size("/tmp/none"), 0U);
              }),
              "Error path invalid : /tmp/none\n");

    pack_head_new head = {};
    pack_node nodes[2] = {};
    const char *paths[2] = {};
    int count = 1;
    EXPECT_EQ(register_file(&head, nodes, nullptr, paths, 2, 3, &count), 1);
    EXPECT_EQ(count, 1);
    EXPECT_EQ(uint64_t{head.flag}, 0U);
    EXPECT_EQ(register_file(&head, nodes, "/tmp/source", paths, 4, 3, &count), 1);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(uint64_t{head.flag}, 4U);
    EXPECT_EQ(nodes[1].type, 3U);
    EXPECT_EQ(nodes[1].size, 7U);
    EXPECT_STREQ(paths[1], "/tmp/source");

    FILE *const stream = fopen("/tmp/stream", "w");
    EXPECT_EQ(copy_to_stream("/tmp/source", stream), 1);
    EXPECT_EQ(copy_to_stream("/tmp/none", stream), 0);
    EXPECT_EQ(copy_to_stream("/tmp", stream), 0);
    EXPECT_EQ(copy_to_stream("/tmp/stream", stream), 0);
    EXPECT_EQ(copy_to_stream("/tmp/source", nullptr), 0);
    fclose(stream);
    EXPECT_EQ(get_file("/tmp/stream"), "content");
}

} // namespace

extern "C" int64_t __real_ftello64(FILE *stream);
extern "C" int64_t __wrap_ftello64(FILE *stream) {
    return __real_ftello64(stream) + stream_offset;
}
