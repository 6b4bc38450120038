#include "package/package.h"

#include "tests/package/sample.h"
#include "tests/support/failing_medium.h"
#include "tests/support/files.h"
#include "tests/support/piped.h"
#include "tests/support/printed.h"
#include "tests/support/scarce_memory.h"

#include <gtest/gtest.h>

using namespace renewer;
using namespace std::string_literals;

namespace {

constexpr const char *path = "/tmp/package.bin";

// What a validator returned and printed.
struct answer {
    int result;
    std::string message;
    bool operator==(const answer &) const = default;
};
std::ostream &operator<<(std::ostream &out, const answer &actual) {
    return out << actual.result << ' ' << actual.message;
}

answer answer_of(int (*validate)(const char *), const char *file) {
    answer actual = {};
    actual.message = printed([&] { actual.result = validate(file); });
    return actual;
}

struct verdicts {
    answer old_layout;
    answer new_layout;
};

verdicts verdicts_on(std::string_view content) {
    put_file(path, content);
    return {answer_of(validate_package, path), answer_of(validate_package_new, path)};
}

const answer good = {1, ""};
const answer wrong_digest = {0, "md5 error!\n"};
const answer wrong_magic = {0, "header error!\n"};
const answer no_header = {0, " Get header error!\n"};
const answer too_short = {0, "size differently!\n"};

TEST(validate, each_layout_by_its_rules) {
    const std::string old_bytes = sample::old_package();
    const std::string new_bytes = sample::new_package();
    struct {
        const char *name;
        std::string content;
        verdicts expected;
    } const cases[] = {
        {"new", new_bytes, {wrong_magic, good}},
        {"new, second magic", sample::new_package(0x77007701), {wrong_magic, good}},
        {"new, magic of the old", sample::new_package(0x77007700), {good, good}},
        {"new, magic 77007702", sample::new_package(0x77007702), {wrong_magic, wrong_magic}},
        {"new, magic 0", sample::new_package(0), {wrong_magic, wrong_magic}},
        {"new, cut at the end", new_bytes.substr(0, 151), {wrong_magic, wrong_digest}},
        {"new, one byte more", new_bytes + '\0', {wrong_magic, wrong_digest}},
        {"new, header only", new_bytes.substr(0, 100), {wrong_magic, no_header}},
        {"new, 60 bytes", new_bytes.substr(0, 60), {wrong_magic, no_header}},
        {"old without flag word", old_bytes, {good, no_header}},
        {"old with flag word", sample::old_package(7), {good, good}},
        {"old, 100 bytes", sample::old_package(7).substr(0, 100), {wrong_digest, no_header}},
        {"old, 59 bytes", old_bytes.substr(0, 59), {too_short, no_header}},
        {"empty", "", {too_short, no_header}},
    };
    for (const auto &[name, content, expected] : cases) {
        const verdicts actual = verdicts_on(content);
        EXPECT_EQ(actual.old_layout, expected.old_layout) << name;
        EXPECT_EQ(actual.new_layout, expected.new_layout) << name;
        EXPECT_EQ(answer_of(validate_package, piped(content).path.c_str()), expected.old_layout);
        EXPECT_EQ(answer_of(validate_package_new, piped(content).path.c_str()), expected.new_layout)
            << name;
    }
}

TEST(validate, every_byte_from_the_digest_on_is_covered) {
    const std::string old_bytes = sample::old_package(7);
    for (size_t i = 4; i < old_bytes.size(); ++i) {
        std::string changed = old_bytes;
        changed[i] = static_cast<char>(changed[i] ^ 0x40);
        EXPECT_EQ(verdicts_on(changed).old_layout, wrong_digest) << i;
    }
    const std::string new_bytes = sample::new_package();
    for (size_t i = 4; i < new_bytes.size(); ++i) {
        std::string changed = new_bytes;
        changed[i] = static_cast<char>(changed[i] ^ 0x40);
        EXPECT_EQ(verdicts_on(changed).new_layout, wrong_digest) << i;
    }
}

// Digest by md5sum over "a" 20,000 times behind the header: more than two chunks.
TEST(validate, package_of_several_chunks) {
    const std::string digest = "\x13\xe4\x5d\x6d\xd9\xc2\x3e\x31\x9c\x25\x8c\xde\x72\xb6\x7f\x90"s;
    const std::string content = sample::old_header{.md5 = digest}.bytes() + std::string(20000, 'a');
    EXPECT_EQ(verdicts_on(content).old_layout, good);
    EXPECT_EQ(answer_of(validate_package, piped(content).path.c_str()), good);
    const auto without_memory = [](const char *package) {
        allocations_left = 0;
        const int sound = validate_package(package);
        allocations_left = INT_MAX;
        return sound;
    };
    EXPECT_EQ(answer_of(without_memory, path), good);
}

TEST(validate, medium_that_fails) {
    const answer unread = {0, "read fail!\n"};
    const struct {
        int (*validate)(const char *);
        answer expected[4]; // by the number of reads that work
    } cases[] = {{validate_package, {too_short, unread, unread, good}},
                 {validate_package_new, {no_header, no_header, unread, unread}}};
    put_file(path, sample::old_package(7));
    for (const auto &[validate, expected] : cases) {
        for (int reads = 0; reads < 4; ++reads) {
            reads_that_work = reads;
            EXPECT_EQ(answer_of(validate, path), expected[reads]) << reads;
        }
    }
}

TEST(validate, nothing_to_open) {
    EXPECT_EQ(answer_of(validate_package, nullptr), (answer{0, "path error!\n"}));
    EXPECT_EQ(answer_of(validate_package_new, nullptr), (answer{0, "path error!\n"}));
    EXPECT_EQ(answer_of(validate_package, "/tmp/none"), (answer{0, "open fail!\n"}));
    EXPECT_EQ(answer_of(validate_package_new, "/tmp/none"), no_header);
}

} // namespace
