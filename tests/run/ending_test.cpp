// How a run ends: what the user is asked and shown, the marker files, and the end of the process.

#include "simulator/unit/unit.h"
#include "tests/run/order.h"
#include "tests/support/after_2038.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr auto asked = "led Light_Gps 255"; // the first blink of the confirmation

const std::vector<std::string> from_storage = {"1", "/media/sda1/update", "34"};

std::string commands_after(const outcome &end, std::string_view first) {
    const std::string all = end.transcript({event_kind::shell, event_kind::exit});
    const size_t begin = all.find(first);
    return begin == std::string::npos ? all : all.substr(begin);
}

unit_time between(const outcome &end, std::string_view from, std::string_view to) {
    const auto begun = end.when(from);
    const auto ended = end.when(to);
    EXPECT_TRUE(begun && ended) << from << " / " << to << "\n" << end.transcript();
    return begun && ended ? *ended - *begun : unit_time(-1);
}

constexpr const char cancelled[] = "shell /etc/init.d/S080_application stop\n"
                                   "shell touch /tmp/update_over\n"
                                   "shell sync\n"
                                   "exit status 0\n";

TEST(ending, second_power_press_cancels) {
    const outcome end = unit()
                            .model("13")
                            .clock_speed(10) // the presses come within 2 s on a busy machine too
                            .press(key::right, after(asked, 500ms))
                            .press(key::right, after("act release right", 100ms))
                            .run(from_storage);
    EXPECT_TRUE(end.has("out user canceled  update program"));
    EXPECT_EQ(commands_after(end, "shell /etc"), cancelled);
    EXPECT_TRUE(
        end.exists("/tmp/update_over")); // it was not removed, and the run does not wait for that
    EXPECT_FALSE(end.exists("/tmp/update_flag"));
    EXPECT_EQ(end.file("/data/sbin/renewer"), "the installed updater\n");
    // The refusal flashes three times and rests before the marker is made: 3 x 2 s + 3 s.
    EXPECT_GE(between(end, "user canceled", "shell touch"), 9s);
    EXPECT_EQ(end.transcript({event_kind::sleep}),
              "sleep 1 s\nsleep 1 s\nsleep 1 s\nsleep 1 s\nsleep 1 s\nsleep 1 s\nsleep 3 s\n"
              "sleep 1 s\n"); // the last one belongs to the ending
}

TEST(ending, silence_cancels_after_two_minutes) {
    const outcome end = unit().model("13").clock_speed(100).run(from_storage);
    EXPECT_EQ(end.count("wait 0.3 s"), 400); // 400 x 300 ms
    EXPECT_EQ(commands_after(end, "shell /etc"), cancelled);
    EXPECT_EQ(end.exit_status, 0);
}

TEST(ending, single_power_press_confirms_after_two_seconds) {
    const outcome end = unit()
                            .model("13")
                            .press(key::right, after(asked, 1s))
                            .acknowledge_end(200ms)
                            .run(from_storage);
    EXPECT_GE(between(end, "act release right", "out poweroff button press one time"), 2s);
    EXPECT_EQ(end.exit_status, 1);
}

TEST(ending, success_is_shown_and_reported_before_the_reboot) {
    const outcome end = unit()
                            .model("13")
                            .press(key::ok, after(asked, 500ms))
                            .remove("/tmp/update_over", after("sleep 0.1 s", 1s))
                            .run(from_storage);
    const unit_time rest = between(end, "shell cp /firmware/renewer.bin /data/sbin/renewer",
                                   "shell touch /tmp/update_flag");
    EXPECT_GE(rest, 13s); // 10 s of rest and 3 s of the success pattern
    EXPECT_TRUE(in_order(end, {"sleep 10 s", "sleep 3 s"}));
    // One line for each poll, every 100 ms from 1 s after the marker was made until it is removed.
    const int polls = end.count("shell echo check_update_over");
    EXPECT_GE(polls, 2);
    EXPECT_EQ(end.count("sleep 0.1 s"), polls - 1);
    std::string log = "installing\ninstalled\nupdate_success\nrm_file_success\n";
    for (int poll = 0; poll < polls; ++poll) {
        log += "check_update_over\n";
    }
    EXPECT_EQ(end.file("/data/app/log/update.log"), log);
    EXPECT_TRUE(in_order(end, {"act remove /tmp/update_over", "shell /etc/init.d/rc.stop"}));
    EXPECT_EQ(commands_after(end, "shell /etc/init.d/rc.stop"), "shell /etc/init.d/rc.stop\n"
                                                                "shell /etc/init.d/umount_all\n"
                                                                "shell sync\n"
                                                                "shell reboot\n"
                                                                "exit status 1\n");
}

TEST(ending, failure_is_shown_and_reported_before_the_reboot) {
    const outcome end = unit()
                            .model("13")
                            .install_script("#!/bin/sh\necho broken\nexit 1\n")
                            .press(key::ok, after(asked, 500ms))
                            .acknowledge_end(3s)
                            .run(from_storage);
    EXPECT_EQ(end.file("/data/app/log/update.log"), "broken\n");
    const auto flagged = end.when("shell touch /tmp/update_flag");
    const auto shown = end.when("led Light_Gps 255", 2);
    ASSERT_TRUE(flagged && shown);
    EXPECT_LT(*flagged, *shown);
    EXPECT_EQ(commands_after(end, "shell touch /tmp/update_flag"), "shell touch /tmp/update_flag\n"
                                                                   "shell touch /tmp/update_over\n"
                                                                   "shell sync\n"
                                                                   "shell /etc/init.d/rc.stop\n"
                                                                   "shell /etc/init.d/umount_all\n"
                                                                   "shell sync\n"
                                                                   "shell reboot\n"
                                                                   "exit status 1\n");
    EXPECT_TRUE(in_order(end, {"act remove /tmp/update_over", "shell /etc/init.d/rc.stop"}));
}

TEST(ending, refusal_waits_until_the_marker_is_removed) {
    const outcome end = unit()
                            .model("13")
                            .remove("/tmp/update_over", after("sleep 2 s", 3s))
                            .run({"1", "/mnt/x", "34"});
    EXPECT_GE(between(end, "sleep 2 s", "exit status 0"), 3s);
    // The first poll after 1 s, then one every 2 s.
    EXPECT_TRUE(end.transcript({event_kind::sleep}).starts_with("sleep 1 s\nsleep 2 s\n"));
    EXPECT_EQ(end.count("sleep 1 s"), 1);
}

TEST(ending, marker_that_is_never_removed_blocks_the_run) {
    const outcome end =
        unit().model("13").clock_speed(1000).patience(2s).run({"1", "/mnt/x", "34"});
    EXPECT_TRUE(end.timed_out);
    EXPECT_FALSE(end.has("exit"));
}

void stamp_link(const std::filesystem::path &root) {
    utimensat(AT_FDCWD, (root / "firmware/update/out").c_str(), after_2038, AT_SYMLINK_NOFOLLOW);
}

TEST(ending, only_the_package_below_firmware_update_is_removed) {
    const std::string deep =
        "/firmware/update/" + std::string(200, 'd') + "/" + std::string(200, 'e');
    const std::string left = "out package path leads out of /firmware/update, not removed";
    struct {
        std::string path;
        std::string expected; // the line of the time line; empty: neither command nor line
        bool removed;
    } const cases[] = {
        {"/firmware/update", "shell rm -rf /firmware/update", true},
        {"/firmware/update_old", "shell rm -rf /firmware/update_old", true},
        {"/firmware/update/two words", "shell rm -rf '/firmware/update/two words'", true},
        {"/firmware/update/line\nend", "shell rm -rf '/firmware/update/line\nend'", true},
        {deep, "shell rm -rf " + deep, true},
        {"/firmware/update/..", left, false},
        {"/firmware/update/a/../../update", left, false},
        {"/firmware/update/a/../b", "shell rm -rf /firmware/update/a/../b", true},
        {"/firmware/update/out/app", left, false},
        {"/firmware/update/out/", left, false},
        {"/firmware/update/out", "shell rm -rf /firmware/update/out", true},
        {"/firmware/update/file/in/it", left, false},
        {"/firmware/update/..pack", "shell rm -rf /firmware/update/..pack", true},
        {"/firmware/other", "", false},
    };
    for (const auto &[path, expected, removed] : cases) {
        SCOPED_TRACE(path);
        unit it;
        it.model("13").acknowledge_end(200ms).clock_speed(100);
        it.link("/firmware/update/out", "/data").file("/data/app/kept", "");
        it.file("/firmware/update/file", "").does("stamp the link", stamp_link, at(0ms));
        if (removed && !path.ends_with("/out")) {
            it.file(path + "/payload", "");
        }
        const outcome end = it.run({"5", path});
        if (expected.empty()) {
            EXPECT_FALSE(end.has("shell rm "));
            EXPECT_FALSE(end.has("not removed"));
        } else {
            EXPECT_TRUE(end.has(expected)) << end.transcript();
        }
        EXPECT_EQ(end.count("shell rm "), removed ? 1 : 0);
        EXPECT_TRUE(end.exists("/data/app/kept"));
        if (removed) {
            EXPECT_FALSE(end.exists(path));
        }
        EXPECT_EQ(end.exit_status, 1);
    }
}

TEST(ending, package_is_removed_after_a_failure_too) {
    const outcome end = unit()
                            .model("13")
                            .install_script("exit 1\n")
                            .acknowledge_end(200ms)
                            .run({"5", "/firmware/update/pack"});
    EXPECT_TRUE(in_order(end, {"shell touch /tmp/update_flag", "shell rm -rf /firmware/update/pack",
                               "shell touch /tmp/update_over"}));
}

TEST(ending, arguments_are_checked_before_anything_is_touched) {
    const std::string usage = "renewer_version:v1.1.4\nusage: renewer KIND PATH PN\n";
    struct {
        std::vector<std::string> arguments;
        int exit_status;
        std::string errors;
    } const cases[] = {
        {{}, 2, usage},
        {{"0"}, 2, usage},
        {{"0", "/media/sda1/update"}, 2, usage},
        {{"1", "/media/sda1/update"}, 2, usage},
        {{"2", "/media/sda1/update"}, 2, usage},
        {{"word", "/media/sda1/update"}, 2, usage},
        {{"--help"}, 0, ""},
        {{"--version"}, 0, ""},
    };
    for (const auto &[arguments, exit_status, errors] : cases) {
        const outcome end = unit().model("13").run(arguments);
        SCOPED_TRACE(end.output());
        EXPECT_EQ(end.exit_status, exit_status);
        EXPECT_EQ(end.errors(), errors);
        EXPECT_EQ(end.transcript({event_kind::shell, event_kind::led, event_kind::sleep}), "");
        EXPECT_EQ(end.output().empty(), exit_status != 0);
    }
    const std::string version = unit().run({"--version"}).output();
    EXPECT_TRUE(version.starts_with("renewer_version:v1.1.4\n$ Built_Time: ")) << version;
}

} // namespace
