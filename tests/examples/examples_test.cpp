// The example applications, built against the installed libraries, in a unit.

#include "simulator/unit/temporary_directory.h"
#include "simulator/unit/unit.h"
#include "tests/package/sample.h"
#include "tests/support/command.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace simulator;
using namespace std::string_literals;

namespace {

constexpr const char package_path[] = "/media/sda1/update_abc_b20240523.bin";

// A host package of version 1.2.3 for units "1013...". The digest was made by md5sum.
std::string host_package() {
    const auto digest = "\x84\x6e\xd9\x78\x01\x69\xac\xf6\x89\xb0\x08\xf9\xbd\x5f\x68\x45"s;
    return sample::old_header{
               .md5 = digest, .pn = "\x10\x13\x56\x04\x00\x12\x04"s, .pnlen = 14, .count = 1}
               .bytes() +
           sample::node(1, 72, 5) + "true\n\0\0\0"s;
}

struct signed_package {
    std::string package;
    std::string signature;
    std::string key;
};

signed_package sign(const std::string &package) {
    const temporary_directory work;
    put_file(work.path / "p", package);
    EXPECT_EQ(run_command("cd " + work.path.string() +
                          " && minisign -G -W -p pub -s sec >/dev/null 2>&1"
                          " && minisign -S -s sec -m p -t 'release 1.2.3' >/dev/null 2>&1")
                  .status,
              0);
    return {package, get_file(work.path / "p.minisig"), get_file(work.path / "pub")};
}

outcome start_update(const signed_package &made) {
    return unit()
        .file(package_path, made.package)
        .file(package_path + ".minisig"s, made.signature)
        .file("/update/key.pub", made.key)
        .file("/data/sbin/renewer", "#!/bin/sh\necho started \"$@\"\n", 0755)
        .program(EXAMPLES "/start_update")
        .run({"/update/key.pub"});
}

TEST(start_update, starts_the_updater_on_what_was_signed_alone) {
    const signed_package made = sign(host_package());
    const outcome whole = start_update(made);
    EXPECT_EQ(whole.exit_status, 0) << whole.transcript();
    EXPECT_TRUE(whole.has("out signed: release 1.2.3")) << whole.transcript();
    EXPECT_TRUE(whole.has("out started 0 /media/sda1/update 13")) << whole.transcript();
    EXPECT_EQ(whole.file("/firmware/update/install.sh"), "true\n");

    signed_package changed = made;
    changed.package.back() = 'x';
    const outcome refused = start_update(changed);
    EXPECT_EQ(refused.exit_status, 1);
    EXPECT_TRUE(refused.has("err not installed: ")) << refused.transcript();
    EXPECT_FALSE(refused.has("started"));
    EXPECT_NE(refused.file("/firmware/update/install.sh"), "true\n");
}

TEST(oled_hello, shows_a_frame_and_a_text) {
    const outcome end = unit().program(EXAMPLES "/oled_hello").run({"/dev/spidev0.0", "GNSS"});
    EXPECT_EQ(end.exit_status, 0) << end.transcript();
    const ssd1327_panel::levels seen = end.oled.seen_levels();
    const auto lit_between = [&](int top, int bottom) {
        return std::count_if(seen.begin() + 128 * top, seen.begin() + 128 * bottom,
                             [](uint8_t level) { return level != 0; });
    };
    EXPECT_EQ(lit_between(0, 1), 128);
    EXPECT_EQ(lit_between(1, 56), 55 * 2);
    EXPECT_GT(lit_between(56, 72), 16 * 2 + 40) << "the text";
    EXPECT_EQ(lit_between(72, 127), 55 * 2);
}

} // namespace
