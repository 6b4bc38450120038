#include "simulator/unit/package.h"
#include "simulator/unit/temporary_directory.h"
#include "simulator/unit/unit.h"

#include "tests/support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace simulator;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

constexpr const char path[] = "/media/sda1/update_new_b20240523.bin";
constexpr const char script[] = "#!/bin/sh\n"
                                "echo the script of the package\n"
                                "cp /firmware/renewer.bin /data/app/seen\n";

outcome run_with_package_for(std::string_view pn) {
    const temporary_directory desk;
    const fs::path file = desk.path / "update.bin";
    make_package(file, pn, script);
    return unit()
        .model("13")
        .package(file)
        .press(key::ok, after("led Light_Gps 255", 1s))
        .acknowledge_end(500ms)
        .run({"3", path, ""});
}

TEST(package_run, package_for_this_unit_is_installed_from_end_to_end) {
    const outcome end = run_with_package_for("1013563400120000");
    EXPECT_THAT(end.output(), HasSubstr("version_content: 1.1.4.0\n"
                                        "git_version    : 1a2b3c4d\n"));
    EXPECT_THAT(end.output(), HasSubstr("2,3 PN fit!\n"));
    EXPECT_TRUE(end.has("out status 0"));
    EXPECT_TRUE(end.has("shell reboot"));
    EXPECT_EQ(end.exit_status, 1);
    EXPECT_THAT(end.file("/data/app/log/update.log").value_or(""),
                HasSubstr("the script of the package\n"));

    // The updater that the package carried is the one that is installed now, byte for byte.
    const std::string updater = end.file("/data/sbin/renewer").value_or("");
    EXPECT_EQ(updater.substr(0, 4), "\177ELF");
    EXPECT_EQ(end.file("/data/app/seen").value_or(""), updater);
}

TEST(package_run, package_for_another_unit_is_refused) {
    const outcome end = run_with_package_for("1016563400120000");
    EXPECT_THAT(end.output(), HasSubstr("2,3 PN not fit!\n"));
    EXPECT_FALSE(end.exists("/data/app/seen"));
    EXPECT_FALSE(end.has("shell reboot"));
    EXPECT_EQ(end.exit_status, 0);
}

TEST(package_run, damaged_package_does_not_reach_the_unit) {
    const temporary_directory desk;
    const fs::path file = desk.path / "update.bin";
    make_package(file, "1013563400120000", script);
    std::string bytes = get_file(file);
    bytes.back() = static_cast<char>(bytes.back() ^ 1);
    put_file(file, bytes);
    EXPECT_THROW(unit().package(file).run({"3", path, ""}), std::runtime_error);
}

} // namespace
