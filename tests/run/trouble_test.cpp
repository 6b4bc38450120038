// What the run does when something around it breaks.

#include "tests/run/order.h"
#include "tests/run/usual_unit.h"

#include <gtest/gtest.h>

#include <csignal>

using namespace simulator;

namespace {

const std::vector<std::string> no_questions = {"5", "/firmware/package"};

TEST(trouble, run_outlives_the_reader_of_its_output) {
    const outcome end = usual_unit()
                            .output_read_by_application()
                            .file("/etc/init.d/umount_all",
                                  "#!/bin/sh\necho unmounting\necho done > /tmp/unmounted\n", 0755)
                            .run(no_questions);
    // From here on the reader is gone and what the run prints is lost.
    EXPECT_TRUE(end.has("call S080_application ended"));
    EXPECT_FALSE(end.has("out wait -1 sec..."));
    EXPECT_EQ(end.file("/tmp/unmounted"), "done\n");
    EXPECT_EQ(end.file("/data/sbin/renewer"), "the updater of this update\n");
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, install_script_alone_has_the_usual_signals) {
    const std::string script = "#!/bin/sh\n"
                               "for signal in PIPE HUP; do\n"
                               "  sh -c \"kill -$signal \\$\\$\" 2> /dev/null; echo ended by $?\n"
                               "done\n";
    const outcome end = usual_unit()
                            .install_script(script)
                            .file("/etc/init.d/rc.stop", script, 0755)
                            .run(no_questions);
    EXPECT_TRUE(end.file("/data/app/log/update.log")->starts_with("ended by 141\nended by 129\n"))
        << *end.file("/data/app/log/update.log");
    EXPECT_EQ(end.count("out ended by 0"), 2);
}

TEST(trouble, termination_signals_do_not_stop_a_shutdown) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        const outcome end =
            usual_unit()
                .file("/etc/init.d/rc.stop", "#!/bin/sh\nsleep 5\n", 0755)
                .without_shell(4, "/etc/init.d/umount_all")
                .kill_program(SIGHUP, after("sleep 10 s", 1s)) // and never before
                .kill_program(signal, after("shell /etc/init.d/rc.stop", 1s))
                // Between two attempts to start a shell: system(3) itself ignores SIGINT.
                .kill_program(signal, after("shell /etc/init.d/umount_all", 500ms))
                .run(no_questions);
        EXPECT_EQ(end.count("act signal"), 3);
        EXPECT_TRUE(end.has("call umount_all"));
        EXPECT_TRUE(end.has("call reboot"));
        EXPECT_EQ(end.exit_status, 1);
    }
}

TEST(trouble, shell_that_cannot_be_started_is_retried_and_then_skipped) {
    struct {
        int times;
        const char *command;
        bool installed;
        const char *last;
    } const cases[] = {
        {4, "", true, "call reboot\n"}, // the application is stopped nevertheless
        {4, "cp -drf", true, "call reboot\n"},
        {4, "/firmware/install.sh", true, "call reboot\n"},
        {99, "cp /firmware", true, "call reboot\n"},
        {99, "touch", true, "call reboot\n"},
        {99, "reboot", true, "call reboot by the kernel\n"},
        {99, "", false, "call reboot by the kernel\n"},
    };
    for (const auto &[times, command, installed, last] : cases) {
        SCOPED_TRACE(command);
        const outcome end = usual_unit().without_shell(times, command).run(no_questions);
        EXPECT_GE(end.count("sleep 1 s"), 4) << "the pauses between the attempts";
        EXPECT_EQ(end.has("out status 0"), installed);
        EXPECT_EQ(end.count("out fork_exec"), installed ? 1 : 0);
        EXPECT_EQ(end.has("call S080_application stop"), times < 99 || *command != '\0');
        EXPECT_EQ(end.file("/data/sbin/renewer"),
                  installed ? "the updater of this update\n" : "the installed updater\n");
        EXPECT_TRUE(end.exists("/tmp/update_flag"));
        EXPECT_TRUE(in_order(end, {"act remove /tmp/update_over", "shell /etc/init.d/rc.stop"}));
        EXPECT_TRUE(end.transcript({event_kind::call}).ends_with(last)) << end.transcript();
        EXPECT_EQ(end.exit_status, 1);
    }
}

TEST(trouble, reboot_command_that_is_missing_or_fails_is_replaced_by_the_kernels) {
    for (const char *script : {"#!/bin/sh\nexit 1\n", "#!/bin/sh\nexit 127\n"}) {
        const outcome end =
            usual_unit().file("/.simulator/bin/reboot", script, 0755).run(no_questions);
        EXPECT_TRUE(in_order(end, {"shell reboot", "call reboot by the kernel"}));
        EXPECT_EQ(end.count("shell reboot"), 1);
        EXPECT_TRUE(end.transcript({event_kind::call}).ends_with("call reboot by the kernel\n"));
    }
}

TEST(trouble, missing_leds_are_reported_and_skipped) {
    const outcome end = usual_unit().without("/sys/class/leds").run(no_questions);
    EXPECT_TRUE(end.has("err open: No such file or directory"));
    EXPECT_TRUE(end.has("out led dev open failed"));
    EXPECT_TRUE(end.has("out led dev  open failed"));
    EXPECT_TRUE(end.has("shell echo update_success"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, log_that_cannot_be_written_fails_the_update_but_not_the_run) {
    const outcome end = usual_unit().without("/data/app/log").run(no_questions);
    EXPECT_EQ(end.count("out status 2"), 2); // the shell's own, for a redirection that fails
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(trouble, marker_that_cannot_be_made_or_is_gone_delays_nothing) {
    const outcome end = unit().model("13").without("/tmp").file("/tmp", "").run(no_questions);
    EXPECT_NE(end.errors().find("touch: cannot touch '/tmp/update_over'"), std::string::npos);
    EXPECT_TRUE(end.has("call reboot"));
    EXPECT_EQ(end.exit_status, 1);
    const std::string made_and_taken_away = "#!/bin/sh\nexit 0\n";
    EXPECT_EQ(unit()
                  .model("13")
                  .file("/.simulator/bin/touch", made_and_taken_away, 0755)
                  .run(no_questions)
                  .exit_status,
              1);
}

TEST(trouble, path_of_any_length_is_used_whole) {
    const std::string path = "/firmware/update/" + std::string(100'000, 'x');
    const outcome end = usual_unit().run({"5", path});
    EXPECT_TRUE(end.has("shell rm -rf " + path));
    EXPECT_EQ(end.exit_status, 1);
}

// The updater is killed at each step of the run. Later steps must not have happened, and the
// installed updater must be whole.
TEST(trouble, kill_at_any_step_leaves_nothing_half_done) {
    struct {
        const char *step;
        bool files_in_place;
        bool updater_replaced;
        bool marked;
    } const cases[] = {
        {"led Light_Gps 255", false, false, false},
        {"out fork_exec", true, false, false},
        {"sleep 10 s", true, true, false},
        {"act found /tmp/update_over", true, true, true},
    };
    for (const auto &[step, in_place, replaced, marked] : cases) {
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
        EXPECT_EQ(end.exists("/tmp/update_over"), marked);
        EXPECT_FALSE(end.has("call reboot"));
    }
}

TEST(trouble, no_process_of_a_unit_outlives_the_run) {
    // The tree of a unit that has ended must not change any more.
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
