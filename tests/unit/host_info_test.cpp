#include "unit/host_info.h"

#include "tests/support/files.h"
#include "tests/support/printed.h"

#include <cstring>
#include <filesystem>

using namespace renewer;

namespace {

constexpr const char path[] = "/update/hw/sys";

std::string record_of(const host_info &host) {
    return {reinterpret_cast<const char *>(&host), sizeof(host)};
}

TEST(host_info, reads_the_first_77_bytes_and_no_more) {
    for (const size_t size : {size_t{0}, size_t{10}, size_t{77}, size_t{5000}}) {
        const std::string content(size, 'x');
        put_file(path, content);
        host_info host;
        memset(&host, 'y', sizeof(host)); // as an earlier, longer reading left it
        EXPECT_EQ(get_local_host_info(&host), 1);
        std::string expected = content.substr(0, 77);
        expected.resize(77, '\0');
        EXPECT_EQ(record_of(host), expected) << size;
    }
}

TEST(host_info, part_number_begins_at_byte_7) {
    put_file(path, std::string("0123456ABCD\0E", 13));
    host_info host = {};
    get_local_host_info(&host);
    EXPECT_TRUE(host_pn_is(host, 0, 'A', 'B'));
    EXPECT_TRUE(host_pn_is(host, 2, 'C', 'D'));
    EXPECT_FALSE(host_pn_is(host, 2, 'D', 'C'));
    EXPECT_FALSE(host_pn_is(host, 4, '\0', 'E'));
    EXPECT_FALSE(host_pn_is(host, 6, '\0', '\0'));
}

TEST(host_info, nothing_is_kept_between_readings) {
    host_info host;
    for (const char *pn : {"first", "second", "3"}) {
        put_file(path, std::string("0123456") + pn);
        EXPECT_TRUE(read_host_or_report(host));
        EXPECT_STREQ(host.pn, pn);
    }
}

TEST(host_info, failure_is_reported_and_changes_nothing) {
    std::filesystem::remove(path);
    host_info host;
    memset(&host, 'x', sizeof(host));
    EXPECT_EQ(reply_of([&] { return get_local_host_info(&host) + get_local_host_info(nullptr); }),
              (reply{0, "", "open sys err: No such file or directory\n"}));
    EXPECT_EQ(record_of(host), std::string(77, 'x'));
}

} // namespace
