// What the run does when something around it breaks.

#include "simulator/unit/unit.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace simulator;

namespace {

const std::vector<std::string> no_questions = {"5", "/firmware/package"};

unit usual_unit() {
    unit it;
    it.model("13").acknowledge_end(200ms).clock_speed(100);
    return it;
}

TEST(trouble, run_outlives_the_reader_of_its_output) {
    const outcome end = usual_unit().output_read_by_application().run(no_questions);
    // The reader is gone from here on: what the run prints later has nowhere to go.
    EXPECT_TRUE(end.has("call S080_application ended"));
    EXPECT_FALSE(end.has("out wait -1 sec..."));
    EXPECT_EQ(end.file("/data/sbin/renewer"), "the updater of this update\n");
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, install_script_has_the_usual_broken_pipe_signal) {
    const outcome end = usual_unit()
                            .install_script("#!/bin/sh\nsh -c 'kill -PIPE $$'\necho ended by $?\n")
                            .run(no_questions);
    EXPECT_TRUE(end.file("/data/app/log/update.log")->starts_with("ended by 141\n"))
        << *end.file("/data/app/log/update.log");
}

TEST(trouble, missing_leds_are_reported_and_passed_over) {
    const outcome end = usual_unit().without("/sys/class/leds").run(no_questions);
    EXPECT_TRUE(end.has("err open: No such file or directory"));
    EXPECT_TRUE(end.has("out led dev open failed"));
    EXPECT_TRUE(end.has("out led dev  open failed"));
    EXPECT_TRUE(end.has("shell echo update_success"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, missing_key_device_declines_after_the_wait) {
    const outcome end =
        usual_unit().without("/dev/input/event1").run({"1", "/media/sda1/update", "34"});
    EXPECT_EQ(end.count("out key fd < 0"), 1);
    EXPECT_TRUE(end.has("user canceled"));
    EXPECT_EQ(end.exit_status, 0);
}

TEST(trouble, log_that_cannot_be_written_fails_the_update_but_not_the_run) {
    const outcome end = usual_unit().without("/data/app/log").run(no_questions);
    EXPECT_EQ(end.count("out status 2"), 2); // the shell's own, for a redirection that fails
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, marker_that_cannot_be_made_holds_nothing) {
    const outcome end = unit().model("13").without("/tmp").file("/tmp", "").run(no_questions);
    EXPECT_NE(end.errors().find("touch: cannot touch '/tmp/update_over'"), std::string::npos);
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, path_of_any_length_is_taken_whole) {
    const std::string path = "/firmware/update/" + std::string(100'000, 'x');
    const outcome end = usual_unit().run({"5", path});
    EXPECT_TRUE(end.has("shell rm -rf " + path));
    EXPECT_EQ(end.exit_status, 1);
}

// The updater is ended hard at each step of the run. What it has not come to must not have
// happened, and the installed updater must be whole.
TEST(trouble, killed_at_any_step_it_leaves_nothing_half_done) {
    struct {
        const char *step;
        bool files_in_place;
        bool updater_replaced;
        bool told_to_the_unit;
    } const cases[] = {
        {"led Light_Gps 255", false, false, false},
        {"out fork_exec", true, false, false},
        {"sleep 10 s", true, true, false},
        {"act found /tmp/update_over", true, true, true},
    };
    for (const auto &[step, in_place, replaced, told] : cases) {
        SCOPED_TRACE(step);
        const outcome end = unit()
                                .model("13")
                                .install_script("#!/bin/sh\nsleep 5\n")
                                .press(key::ok, after("led Light_Gps 255", 500ms))
                                .kill_program(SIGKILL, after(step, 100ms))
                                .run({"1", "/media/sda1/update", "34"});
        EXPECT_EQ(end.ended_by, SIGKILL);
        EXPECT_TRUE(end.has("shell /etc/init.d/S080_application stop"));
        EXPECT_EQ(end.exists("/firmware/install.sh"), in_place);
        EXPECT_EQ(end.file("/data/sbin/renewer"),
                  replaced ? "the updater of this update\n" : "the installed updater\n");
        EXPECT_EQ(end.exists("/tmp/update_over"), told);
        EXPECT_FALSE(end.has("call reboot"));
    }
}

TEST(trouble, nothing_of_a_unit_goes_on_after_the_run) {
    // The tree of a unit that is gone must stay as it is.
    for (const bool cut : {false, true}) {
        unit lively = usual_unit().install_script(
            "#!/bin/sh\n(while :; do date > /tmp/alive; done) &\nsleep 30\n");
        if (cut) {
            lively.cut_power(after("out fork_exec", 20s));
        }
        const outcome end = lively.run(no_questions);
        EXPECT_EQ(end.power_cut, cut);
        EXPECT_EQ(end.has("call reboot"), !cut);
        ASSERT_TRUE(end.exists("/tmp/alive"));
        const auto alive = *end.tree / "tmp/alive";
        std::filesystem::remove(alive);
        timespec pause = {0, 50'000'000};
        nanosleep(&pause, nullptr);
        EXPECT_FALSE(std::filesystem::exists(alive));
    }
}

} // namespace
