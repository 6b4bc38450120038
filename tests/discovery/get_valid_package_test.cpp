#include "discovery/get_valid_package.h"

#include "platform/owner.h"
#include "tests/discovery/storage.h"
#include "tests/support/small_disk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <sys/stat.h>

using namespace renewer;
using namespace std::string_literals;
using namespace storage;
namespace fs = std::filesystem;

namespace {

TEST(get_valid_package, whole_output_for_a_package_that_fits) {
    put_package("/media/sda1/update_abc_b20240523.bin", "10135604320156");
    const search done = search_in(directory, unit_with("1013560000000000"));
    EXPECT_EQ(done.result, 0);
    put_package("/media/sda1/update_abc_b20240523.bin", "10135604320155");
    const search found = search_in(directory, unit_with("1013560000000000"));
    EXPECT_EQ(found.result, 1);
    EXPECT_EQ(found.path, "/media/sda1/update_abc_b20240523.bin");
    EXPECT_EQ(found.lines,
              "num0 0 num1 1 num2 1 num3 3 num4 5 num5 6 num6 0 num9 2 num10 0 num12 5 "
              "stHostinfo 1013560000000000\n"
              "got   package\n"
              "last_ver 66051\n"
              "\n/media/sda1/update_abc_b20240523.bin\n");
}

TEST(get_valid_package, part_number_without_an_end_stops_with_the_record) {
    put_package("/media/sda1/update_abc_b20240523.bin", host_1013);
    const search done = search_in(directory, unit_with("1013" + std::string(66, '7')));
    EXPECT_THAT(done.lines,
                testing::HasSubstr("stHostinfo 1013" + std::string(66, '7') + "\ngot   package\n"));
}

constexpr const char *fit = "file version is fit!\n";
constexpr const char *new_and_fit = "new saker!\nfile version is fit!\n";
constexpr const char *too_old = "new saker!\nfile version is too old!\n";

TEST(get_valid_package, asks_the_presence_inputs_for_a_host_package) {
    const struct {
        std::vector<const char *> inputs; // content of the three files; null for a missing one
        uint32_t version;
        bool allowed;
        const char *lines; // before the summary line
    } cases[] = {
        {{"0", "0", "0"}, 0x02000f, false, too_old},
        {{"0\n", "0\n", "0\n"}, 0x020010, true, new_and_fit},
        {{"0", "0", "0"}, 0x030000, true, new_and_fit},
        {{"0", "0", "0"}, 0x7f02000f, false, too_old},
        {{"1", "0", "0"}, 0x02000f, true, fit},
        {{"0", "1", "0"}, 0x02000f, true, fit},
        {{"0", "0", "1"}, 0x02000f, true, fit},
        {{"", "0", "0"}, 0x02000f, true, fit},
        {{"0", "", "0"}, 0x02000f, true, fit},
        {{"0", "0", ""}, 0x02000f, true, fit},
        {{nullptr, "0", "0"}, 0x020010, false, "open 7Pin_Detect fail!\n"},
        {{"1", nullptr, "0"}, 0x020010, false, "open Batter_A_Detect fail!\n"},
        {{"1", "1", nullptr}, 0x020010, false, "open Batter_B_Detect fail!\n"},
    };
    const char *const names[] = {"7Pin_Detect", "Batter_A_Detect", "Batter_B_Detect"};
    for (const auto &[inputs, version, allowed, lines] : cases) {
        for (size_t i = 0; i < 3; ++i) {
            const std::string path = "/sys/class/misc/gpio-misc/"s + names[i] + "/value";
            fs::remove(path);
            if (inputs[i] != nullptr) {
                put_file(path, inputs[i]);
            }
        }
        put_package("/media/sda1/update_abc_b20240523.bin", "11800000000004", version);
        const search done = search_in(directory, unit_with("1180"));
        EXPECT_EQ(done.result, allowed) << version << lines;
        EXPECT_EQ(done.lines.substr(0, done.lines.find("num0")), lines);
        EXPECT_EQ(done.lines.find("num0") != std::string::npos, allowed);
    }
}

// For other packages and on other units the inputs, missing here, are not read.
TEST(get_valid_package, hardware_check_is_for_host_packages_of_1180_units) {
    put_package("/media/sda1/update_abc_b20240523.bin", "11800010000004");
    EXPECT_EQ(search_in(directory, unit_with("11800000")).result, 1);
    put_package("/media/sda1/update_abc_b20240523.bin", "11810000000004");
    EXPECT_EQ(search_in(directory, unit_with("1181")).result, 1);
}

TEST(get_valid_package, highest_version_whatever_the_order) {
    const host_info host = unit_with("1013");
    const std::string a = "/media/sda1/update_aaa_b20240523.bin";
    const std::string b = "/media/sda1/update_bbb_b20240523.bin";
    struct {
        uint32_t first;
        uint32_t second;
        std::string chosen;
    } const cases[] = {{0x010203, 0x010204, b},
                       {0x010204, 0x010203, a},
                       {0x010300, 0x0102ff, a},
                       {0x7f010203, 0x010204, b}};
    for (const auto &[first, second, chosen] : cases) {
        put_package(a, host_1013, first);
        put_package(b, host_1013, second);
        const search done = search_in(directory, host);
        EXPECT_EQ(done.result, 1);
        EXPECT_EQ(done.path, chosen);
    }
}

TEST(get_valid_package, of_equal_versions_the_first_listed) {
    for (const char *name : {"aaa", "bbb", "ccc"}) {
        put_package("/media/sda1/update_"s + name + "_b20240523.bin", host_1013);
    }
    const std::string first = fs::directory_iterator(directory)->path();
    EXPECT_EQ(search_in(directory, unit_with("1013")).path, first);
}

TEST(get_valid_package, versions_that_are_never_chosen) {
    for (const uint32_t version : {0U, 0x01000000U, 0x80010203U, 0xffffffffU}) {
        put_package("/media/sda1/update_abc_b20240523.bin", host_1013, version);
        EXPECT_EQ(search_in(directory, unit_with("1013")).result, 0) << version;
    }
}

// Either file may be listed first: the search ends at the one that does not fit in any case, and a
// fitting one listed before it is dropped.
TEST(get_valid_package, package_that_does_not_fit_ends_the_search_of_its_directory) {
    put_package("/media/sda1/update_aaa_b20240523.bin", host_1013);
    put_package("/media/sda1/update_bbb_b20240523.bin", host_1016);
    for (const char *pn : {"1013", "1016"}) {
        const search done = search_in(directory, unit_with(pn));
        EXPECT_EQ(done.result, 0);
        EXPECT_THAT(done.lines, testing::EndsWith("pn 2/3/17 not fit\n"));
    }
}

TEST(get_valid_package, files_that_are_skipped_silently) {
    const fs::path dir = directory;
    put_package(dir / "update_abc_b20240523.bin", host_1013);
    put_file(dir / "update_sho_b20240523.bin",
             sample::old_header{.pn = packed(host_1016)}.bytes().substr(0, 59));
    put_file(dir / "update_new_b20240523.bin", sample::new_package());
    put_file(dir / "update_mag_b20240523.bin",
             sample::old_header{.magic = 0x77007701, .pn = packed(host_1016)}.bytes());
    fs::create_directory(dir / "update_dir_b20240523.bin");
    fs::create_symlink("nowhere", dir / "update_lnk_b20240523.bin");
    ASSERT_EQ(mkfifo((dir / "update_fif_b20240523.bin").c_str(), 0600), 0);
    const search done = search_in(directory, unit_with("1013"));
    EXPECT_EQ(done.result, 1);
    EXPECT_EQ(done.path, "/media/sda1/update_abc_b20240523.bin");
    EXPECT_THAT(done.lines, testing::Not(testing::HasSubstr("not fit")));
}

// With a name of 24 characters: a path of 255 is taken, one of 256 would be cut.
TEST(get_valid_package, path_that_would_be_cut) {
    const std::string parent = "/tmp/" + std::string(200, 'd') + "/";
    for (const size_t length : {255U, 256U}) {
        const std::string dir = parent + std::string(length - 25 - parent.size(), 'e');
        put_package(dir + "/update_abc_b20240523.bin", host_1013);
        const search done = search_in(dir, unit_with("1013"));
        EXPECT_EQ(done.result, length == 255) << length;
    }
}

TEST(get_valid_package, storage_that_cannot_be_written_is_not_searched) {
    const small_disk disk(65536);
    put_package(disk.path + "/update_abc_b20240523.bin"s, host_1013);
    for (const bool writable : {true, false}) {
        const unsigned long flags = writable ? MS_REMOUNT : MS_REMOUNT | MS_RDONLY;
        ASSERT_EQ(mount(nullptr, disk.path, nullptr, flags, nullptr), 0);
        EXPECT_EQ(search_in(disk.path, unit_with("1013")).result, writable);
    }
}

TEST(get_valid_package, nowhere_to_search) {
    const host_info host = unit_with("1013");
    char out[256] = {};
    EXPECT_EQ(printed([&] {
                  EXPECT_EQ(find_valid_package(nullptr, &host, out, sizeof(out)), 0);
                  EXPECT_EQ(find_valid_package("/tmp", nullptr, out, sizeof(out)), 0);
                  EXPECT_EQ(find_valid_package("/tmp", &host, nullptr, 0), 0);
                  EXPECT_EQ(find_valid_package("/tmp/none", &host, out, sizeof(out)), 0);
                  EXPECT_EQ(find_valid_package("/.unit", &host, out, sizeof(out)), 0);
              }),
              "");
    EXPECT_EQ(search_in("/tmp", host).lines, "last_ver 0\n");
}

std::string found_by_find_packge(int expected) {
    char *path = nullptr;
    printed([&] { EXPECT_EQ(find_packge(&path), expected); });
    const owned_memory<char> owner(path);
    return path == nullptr ? "" : path;
}

TEST(find_packge, first_directory_with_a_fitting_package_wins) {
    put_file("/update/hw/sys", "0123456" + "1013560000000000"s);
    const std::string name = "/update_abc_b20240523.bin";
    EXPECT_EQ(found_by_find_packge(0), "");
    put_package("/mnt" + name, host_1013, 0x030000);
    EXPECT_EQ(found_by_find_packge(1), "/mnt" + name);
    put_package("/firmware" + name, host_1013, 0x020000);
    EXPECT_EQ(found_by_find_packge(1), "/firmware" + name);
    put_package("/media/sda1" + name, host_1013, 0x010000);
    EXPECT_EQ(found_by_find_packge(1), "/media/sda1" + name);
    put_package("/media/sda1" + name, host_1016, 0x010000);
    EXPECT_EQ(found_by_find_packge(1), "/firmware" + name);
}

TEST(find_packge, without_result_or_host_record) {
    char *path = nullptr;
    const std::string begin = "Looking for firmware packages...\n";
    EXPECT_EQ(printed([] { EXPECT_EQ(find_packge(nullptr), 0); }), begin);
    EXPECT_EQ(complained([&] { EXPECT_EQ(find_packge(&path), 0); }),
              "open sys err: No such file or directory\nGet /update/hw/sys failure!!!\n");
    EXPECT_EQ(path, nullptr);
}

} // namespace
