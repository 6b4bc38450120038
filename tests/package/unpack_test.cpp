#include "package/package.h"

#include "platform/owner.h"
#include "tests/package/sample.h"
#include "tests/support/failing_medium.h"
#include "tests/support/files.h"
#include "tests/support/piped.h"
#include "tests/support/printed.h"
#include "tests/support/small_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <vector>

using namespace renewer;
using namespace std::string_literals;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

constexpr const char *path = "/tmp/package.bin";

// The result and the output of an unpacker for a file with this content.
struct unpacking {
    int result = -1;
    std::string lines;
};
using unpacker = int (*)(const char *, const char *);

unpacking unpack(unpacker operation, const std::string &content, const char *out_dir) {
    put_file(path, content);
    unpacking done;
    done.lines = printed([&] { done.result = operation(path, out_dir); });
    return done;
}

// Names and contents of a directory, one a line.
std::string listing(const fs::path &directory) {
    std::map<std::string, std::string> files;
    for (const auto &entry : fs::directory_iterator(directory)) {
        files[entry.path().filename()] = get_file(entry.path());
    }
    std::string lines;
    for (const auto &[name, content] : files) {
        lines += name + ": " + content + "\n";
    }
    return lines;
}

std::string with_nodes(const std::vector<std::string> &nodes, const std::string &payloads = "") {
    std::string bytes = sample::old_header{.count = static_cast<uint32_t>(nodes.size())}.bytes();
    for (const std::string &node : nodes) {
        bytes += node;
    }
    return bytes + payloads;
}

TEST(unpack, new_layout_into_a_directory) {
    const unpacking done = unpack(unpack_package_new, sample::new_package(), "/tmp/a/b");
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(done.lines, "outpath : /tmp/a/b/install.sh\n"
                          "node 00  :  type(          install ),  offset( 136 ), size( 5 )\n"
                          "outpath : /tmp/a/b/kernel.bin\n"
                          "node 01  :  type(           kernel ),  offset( 144 ), size( 8 )\n");
    EXPECT_EQ(listing("/tmp/a/b"), "install.sh: true\n\nkernel.bin: kernel!\n\n");
    struct stat script;
    struct stat kernel;
    ASSERT_EQ(stat("/tmp/a/b/install.sh", &script), 0);
    ASSERT_EQ(stat("/tmp/a/b/kernel.bin", &kernel), 0);
    EXPECT_EQ(script.st_mode & 07777, 0777U);
    EXPECT_EQ(kernel.st_mode & 0111, 0U);
}

TEST(unpack, old_layout_into_the_current_directory) {
    fs::create_directories("/tmp/here");
    fs::current_path("/tmp/here");
    const unpacking done = unpack(unpack_package, sample::old_package(), nullptr);
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(done.lines, "outpath : install.sh\n"
                          "node 00  :  type(          install ),  offset( 84 ), size( 5 )\n"
                          "outpath : renewer.bin\n"
                          "node 01  :  type(          renewer ),  offset( 92 ), size( 12 )\n");
    EXPECT_EQ(listing("."), "install.sh: true\n\nrenewer.bin: the renewer\n\n");
}

TEST(unpack, directories_with_characters_of_the_shell) {
    for (const std::string name : {"two words", "a;touch hit"}) {
        const std::string directory = "/tmp/out/" + name;
        EXPECT_EQ(unpack(unpack_package, sample::old_package(), directory.c_str()).result, 1);
        EXPECT_EQ(listing(directory), "install.sh: true\n\nrenewer.bin: the renewer\n\n") << name;
        fs::remove_all(directory);
        EXPECT_TRUE(fs::is_empty("/tmp/out")) << name;
    }
    EXPECT_FALSE(fs::exists("hit"));
}

// What is read before the first extraction: when it fails, no file may be created.
TEST(unpack, package_that_cannot_be_read) {
    const std::string old_bytes = sample::old_package();
    const std::string new_bytes = sample::new_package();
    const auto new_with = [&](const sample::new_header &head) {
        return head.bytes() + new_bytes.substr(100);
    };
    struct {
        const char *name;
        unpacker operation;
        std::string content;
        std::string lines;
    } const cases[] = {
        {"old, empty", unpack_package, "", ""},
        {"old, cut in count", unpack_package, old_bytes.substr(0, 57), "ret( 0 ) <  nodes( 24 )\n"},
        {"old, cut table", unpack_package, old_bytes.substr(0, 83), "ret( 23 ) <  nodes( 24 )\n"},
        {"new, empty", unpack_package_new, "", "read header faile!\n"},
        {"new, no text", unpack_package_new, new_bytes.substr(0, 100),
         "read header version faile!\n"},
        {"new, empty text", unpack_package_new, new_with({.version_len = 0, .count = 2}),
         "read header version faile!\n"},
        {"new, cut before the last word of the text", unpack_package_new, new_bytes.substr(0, 104),
         "read header md5 faile!\n"},
        {"new, head_len 0", unpack_package_new, new_with({.head_len = 0, .count = 2}),
         "read header md5 faile!\n"},
        {"new, head_len beyond the end", unpack_package_new, new_with({.head_len = 160}),
         "read header md5 faile!\n"},
        {"new, cut table", unpack_package_new, new_bytes.substr(0, 135),
         "ret( 23 ) <  nodes( 24 )\n"},
    };
    for (const auto &[name, operation, content, lines] : cases) {
        const unpacking done = unpack(operation, content, "/tmp/out");
        EXPECT_EQ(done.result, 0) << name;
        EXPECT_EQ(done.lines, lines) << name;
        EXPECT_FALSE(fs::exists("/tmp/out")) << name;
    }
}

TEST(unpack, nothing_to_open) {
    EXPECT_EQ(printed([] {
                  EXPECT_EQ(unpack_package(nullptr, "/tmp/out"), 0);
                  EXPECT_EQ(unpack_package_new(nullptr, "/tmp/out"), 0);
                  EXPECT_EQ(unpack_package("/tmp/none", "/tmp/out"), 0);
                  EXPECT_EQ(unpack_package_new("/tmp/none", "/tmp/out"), 0);
              }),
              "open fail!\n");
    EXPECT_FALSE(fs::exists("/tmp/out"));
    // A part of an old header has no nodes.
    const unpacking done = unpack(unpack_package, sample::old_package().substr(0, 56), "/tmp/out");
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(done.lines, "");
    EXPECT_TRUE(fs::is_directory("/tmp/out"));
}

TEST(unpack, odd_nodes) {
    const uint32_t begin = 60 + 7 * 12;
    const unpacking done =
        unpack(unpack_package,
               with_nodes({sample::node(2, begin, 0), sample::node(3, begin + 4, 100),
                           sample::node(4, 0xffffffff, 0xffffffff), sample::node(9, begin, 4),
                           sample::node(9, begin + 4, 3), sample::node(66, begin, 2),
                           sample::node(1, 0, 0)},
                          "abcdefgh"),
               "/tmp/out");
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(listing("/tmp/out"), ".bin: ab\n"
                                   "install.sh: \n"
                                   "kernel.bin: efgh\n"
                                   "radio_1.bin: efg\n"
                                   "rootfs.bin: \n"
                                   "uboot.bin: \n");
}

TEST(unpack, payload_beyond_two_gigabytes) {
    put_file(path, with_nodes({sample::node(3, 0x90000000, 4)}));
    fs::resize_file(path, 0x90000000);
    std::ofstream(path, std::ios::binary | std::ios::app) << "far away";
    printed([] { EXPECT_EQ(unpack_package(path, "/tmp/out"), 1); });
    EXPECT_EQ(listing("/tmp/out"), "kernel.bin: far \n");
}

TEST(unpack, payload_of_several_chunks) {
    std::string payload;
    for (int i = 0; i < 100000; ++i) {
        payload += static_cast<char>(i * 7919 >> 3);
    }
    for (const uint32_t size : {4095U, 4096U, 4097U, 8192U, 99999U, 100000U}) {
        const unpacking done =
            unpack(unpack_package, with_nodes({sample::node(3, 72, size)}, payload), "/tmp/out");
        EXPECT_EQ(done.result, 1);
        EXPECT_EQ(get_file("/tmp/out/kernel.bin"), payload.substr(0, size)) << size;
    }
}

// "/kernel.bin" has 11 characters: a directory of 244 makes a path of 255.
TEST(unpack, output_path_of_256_characters_is_refused) {
    const std::string parent = "/tmp/" + std::string(200, 'd') + "/";
    const std::string longest = parent + std::string(244 - parent.size(), 'e');
    const std::string fitting = with_nodes({sample::node(3, 72, 1)}, "a");
    EXPECT_EQ(unpack(unpack_package, fitting, longest.c_str()).result, 1);
    EXPECT_EQ(listing(longest), "kernel.bin: a\n");
    fs::remove_all(parent);

    const std::string second_too_long =
        with_nodes({sample::node(3, 84, 1), sample::node(14, 84, 1)}, "a");
    for (const auto &[content, directory] :
         {std::pair(fitting, longest + "e"), std::pair(second_too_long, longest)}) {
        const unpacking refused = unpack(unpack_package, content, directory.c_str());
        EXPECT_EQ(refused.result, 0);
        EXPECT_EQ(refused.lines, "");
        EXPECT_FALSE(fs::exists(parent));
    }
}

TEST(unpack, package_named_like_a_node) {
    for (const char *own : {"install.sh", "renewer.bin"}) {
        for (const bool second_name : {false, true}) {
            fs::remove_all("/tmp/out");
            put_file(path, "");
            fs::create_directory("/tmp/out");
            const std::string file = "/tmp/out/"s + own;
            second_name ? fs::create_hard_link(path, file) : fs::create_symlink(path, file);
            const unpacking done = unpack(unpack_package, sample::old_package(), "/tmp/out");
            EXPECT_EQ(done.result, 1) << file;
            EXPECT_THAT(done.lines, HasSubstr(file + " is the package itself, left out\n"));
            EXPECT_EQ(get_file(path), sample::old_package()) << file;
            EXPECT_EQ(fs::status(path).permissions() & fs::perms::owner_exec, fs::perms::none);
            const owned_file in(fopen(path, "r"));
            const pack_node node = {.type = 3, .offset = 0, .size = 1};
            EXPECT_EQ(node_to_file(in.get(), &node, file.c_str()), 0);
            EXPECT_EQ(get_file(path), sample::old_package()) << file;
            EXPECT_EQ(get_file("/tmp/out/install.sh").size() +
                          get_file("/tmp/out/renewer.bin").size(),
                      sample::old_package().size() + (own == "install.sh"s ? 12 : 5));
        }
    }
}

TEST(unpack, package_through_a_pipe) {
    printed([] {
        EXPECT_EQ(unpack_package(piped(sample::old_package()).path.c_str(), "/tmp/old"), 1);
        EXPECT_EQ(unpack_package_new(piped(sample::new_package()).path.c_str(), "/tmp/new"), 1);
    });
    EXPECT_EQ(listing("/tmp/old"), "install.sh: true\n\nrenewer.bin: the renewer\n\n");
    EXPECT_EQ(listing("/tmp/new"), "install.sh: true\n\nkernel.bin: kernel!\n\n");
}

TEST(unpack, node_to_a_file) {
    const pack_node node = {.type = 3, .offset = 2, .size = 3};
    put_file(path, "abcdefg");
    const owned_file in(fopen(path, "r"));
    EXPECT_EQ(node_to_file(in.get(), &node, "/tmp/node"), 1);
    EXPECT_EQ(get_file("/tmp/node"), "cde");

    EXPECT_EQ(node_to_file(in.get(), nullptr, "/tmp/node"), 0);
    EXPECT_EQ(node_to_file(in.get(), &node, nullptr), 0);
    EXPECT_EQ(node_to_file(in.get(), &node, "/tmp/none/node"), 0);
    EXPECT_EQ(get_file("/tmp/node"), "cde");
    EXPECT_EQ(node_to_file(nullptr, &node, "/tmp/node"), 0);
    EXPECT_EQ(get_file("/tmp/node"), "");
}

TEST(unpack, node_to_a_full_disk) {
    const small_disk disk(16384);
    const std::string file = disk.path + "/node"s;
    put_file(path, std::string(20000, 'x'));
    const owned_file in(fopen(path, "r"));
    const pack_node fits = {.type = 3, .offset = 0, .size = 8192};
    const pack_node too_large = {.type = 3, .offset = 0, .size = 20000};
    EXPECT_EQ(node_to_file(in.get(), &fits, file.c_str()), 1);
    EXPECT_EQ(node_to_file(in.get(), &too_large, file.c_str()), 0);
    const unpacking done =
        unpack(unpack_package, with_nodes({sample::node(3, 72, 20000)}, std::string(20000, 'x')),
               disk.path);
    EXPECT_EQ(done.result, 1);
    EXPECT_THAT(done.lines,
                HasSubstr("/kernel.bin could not be written: No space left on device\n"));
}

TEST(unpack, node_of_a_medium_that_fails) {
    put_file(path, "abcdefg");
    const pack_node node = {.type = 3, .offset = 2, .size = 3};
    for (const int reads : {1, 0}) {
        const owned_file in(fopen(path, "r"));
        reads_that_work = reads;
        EXPECT_EQ(node_to_file(in.get(), &node, "/tmp/node"), reads);
    }
}

} // namespace
