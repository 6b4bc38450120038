// The install step: the copy of the update, its script and the updater's own copy.

#include "tests/run/order.h"
#include "tests/run/usual_unit.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/stat.h>

using namespace simulator;

namespace {

// Kind 0 has a time limit of 60 s, kind 5 has none.
const std::vector<std::string> limited = {"0", "/firmware/package", "13"};
const std::vector<std::string> unlimited = {"5", "/firmware/package"};

bool succeeded(const outcome &end) {
    return end.has("shell echo update_success");
}

TEST(install, script_that_fails_once_is_retried) {
    const outcome end = usual_unit()
                            .install_script("#!/bin/sh\n"
                                            "test -e /tmp/second && echo second && exit 0\n"
                                            "echo first > /tmp/second\n"
                                            "exit 7\n")
                            .run(limited);
    EXPECT_EQ(end.count("out fork_exec: /firmware/install.sh 1>/data/app/log/update.log 2>&1"), 2);
    EXPECT_EQ(end.transcript({event_kind::alarm}),
              "alarm 60 s\nalarm 0 s\nalarm 60 s\nalarm 0 s\n");
    EXPECT_TRUE(in_order(end, {"out status 7", "out status 0"}));
    EXPECT_TRUE(succeeded(end));
    // The second run's output replaces the first's; the run's own lines follow it.
    EXPECT_TRUE(end.file("/data/app/log/update.log")->starts_with("second\nupdate_success\n"));
}

TEST(install, script_that_fails_twice_fails_the_update) {
    const std::pair<const char *, const char *> cases[] = {
        {"#!/bin/sh\nexit 255\n", "out status 255"},
        {"#!/bin/sh\nkill -9 $$\n", "out status 137"},
        {nullptr, "out status 127"}, // none: a failure of the shell
    };
    for (const auto &[script, line] : cases) {
        unit it = usual_unit();
        script == nullptr ? it.without("/firmware/update/install.sh") : it.install_script(script);
        const outcome end = it.run(limited);
        EXPECT_EQ(end.count(line), 2) << end.output();
        EXPECT_FALSE(succeeded(end));
        EXPECT_EQ(end.file("/data/sbin/renewer"), "the installed updater\n");
        EXPECT_TRUE(end.exists("/tmp/update_flag"));
        EXPECT_EQ(end.exit_status, 1);
    }
}

TEST(install, update_without_files_is_not_installed) {
    const outcome end =
        usual_unit().without("/firmware/update").directory("/firmware/update").run(limited);
    EXPECT_TRUE(end.errors().starts_with("cp: cannot stat '/firmware/update/*'")) << end.errors();
    EXPECT_FALSE(end.has("out wait"));
    EXPECT_FALSE(end.has("fork_exec"));
    EXPECT_FALSE(succeeded(end));
}

// The clock is slow enough for a busy machine to start and end a script within its limits. `asked`
// is how often the script is asked to end and `killed` how many groups are killed, in both
// attempts.
void expect_stopped_twice(const char *script, int asked, int killed) {
    const outcome end = usual_unit().clock_speed(40).install_script(script).run(limited);
    EXPECT_EQ(end.count("shell killall install.sh"), asked);
    EXPECT_EQ(end.count("signal 9 to group"), killed);
    EXPECT_EQ(end.count("out fork_exec"), 2);
    EXPECT_FALSE(succeeded(end));
    EXPECT_EQ(end.exit_status, 1);
    EXPECT_EQ(end.transcript({event_kind::alarm}), "alarm 60 s\nalarm 30 s\nalarm 0 s\n"
                                                   "alarm 60 s\nalarm 30 s\nalarm 0 s\n");
}

TEST(install_time_limit, script_that_runs_over_is_stopped_twice) {
    expect_stopped_twice("#!/bin/sh\nwhile :; do sleep 1; done\n", 2, 0);
}

TEST(install_time_limit, script_that_runs_over_and_ignores_the_signal_is_killed) {
    expect_stopped_twice("#!/bin/sh\ntrap '' TERM\nwhile :; do sleep 1; done\n", 4, 2);
}

TEST(install_time_limit, script_that_runs_over_under_another_name_is_killed) {
    expect_stopped_twice("while :; do sleep 1; done\n", 4, 2);
}

TEST(install_time_limit, script_that_runs_over_leaves_no_command_behind) {
    expect_stopped_twice("#!/bin/sh\nsleep 100000\n", 2, 2);
}

TEST(install_time_limit, script_that_ends_well_after_it_has_succeeded) {
    for (const char *script : {"#!/bin/sh\ntrap '' TERM\nsleep 80\nexit 0\n",
                               "#!/bin/sh\ntrap 'exit 0' TERM\nwhile :; do sleep 1; done\n"}) {
        const outcome end = usual_unit().clock_speed(40).install_script(script).run(limited);
        EXPECT_EQ(end.count("shell killall install.sh"), 1);
        EXPECT_EQ(end.count("out fork_exec"), 1);
        EXPECT_TRUE(succeeded(end)) << script;
    }
}

TEST(install, what_a_failed_script_leaves_running_may_finish_before_the_second_attempt) {
    const outcome end = usual_unit()
                            .clock_speed(40)
                            .install_script("#!/bin/sh\n"
                                            "echo attempt >> /tmp/written\n"
                                            "(sleep 15; echo finished >> /tmp/written) &\n"
                                            "exit 1\n")
                            .run(limited);
    EXPECT_EQ(end.file("/tmp/written"), "attempt\nfinished\nattempt\nfinished\n");
    EXPECT_FALSE(end.has("signal 9"));
}

TEST(install_time_limit, what_a_stopped_script_leaves_running_does_not_meet_the_second_attempt) {
    // Each attempt leaves a writer that survives the first signal.
    const outcome end = usual_unit()
                            .install_script("#!/bin/sh\n"
                                            "echo attempt >> /tmp/written\n"
                                            "(trap '' TERM; while :; do\n"
                                            "   echo line of $$ >> /tmp/written; sleep 0.5\n"
                                            "done) &\n"
                                            "wait\n")
                            .run(limited);
    EXPECT_EQ(end.count("signal 9 to group"), 2);
    const std::string written = end.file("/tmp/written").value_or("");
    const size_t second = written.find("attempt", 1);
    ASSERT_NE(second, std::string::npos);
    const std::string first_writer = written.substr(8, written.find('\n', 8) - 8);
    ASSERT_TRUE(first_writer.starts_with("line of ")) << first_writer;
    EXPECT_EQ(written.find(first_writer + "\n", second), std::string::npos) << written;
}

TEST(install, alarm_from_outside_ends_only_scripts_of_the_name) {
    const outcome end = usual_unit()
                            .install_script("#!/bin/sh\n(sleep 60; echo done > /tmp/later) &\n")
                            .kill_program(SIGALRM, after("sleep 10 s", 2s))
                            .acknowledge_end(70s)
                            .run(limited);
    EXPECT_TRUE(end.has("act signal 14"));
    EXPECT_EQ(end.count("shell killall install.sh"), 1);
    EXPECT_EQ(end.transcript({event_kind::alarm}), "alarm 60 s\nalarm 0 s\n");
    EXPECT_FALSE(end.has("signal 9 to group"));
    EXPECT_TRUE(succeeded(end));
}

TEST(install_time_limit, applies_whatever_the_caller_left_set) {
    const outcome end = usual_unit()
                            .careless_starter()
                            .install_script("#!/bin/sh\nwhile :; do sleep 1; done\n")
                            .run(limited);
    EXPECT_EQ(end.count("shell killall install.sh"), 2);
    EXPECT_FALSE(succeeded(end));
    const outcome good = usual_unit()
                             .careless_starter()
                             .file("/etc/init.d/rc.stop",
                                   "#!/bin/sh\n"
                                   "for fd in 0 1 2; do\n"
                                   "  is=$(readlink /proc/$$/fd/$fd); echo $is >> /tmp/standard\n"
                                   "done\n",
                                   0755)
                             .run(limited);
    EXPECT_TRUE(succeeded(good)) << good.transcript();
    EXPECT_EQ(good.file("/tmp/standard"), "/dev/null\n/dev/null\n/dev/null\n");
}

TEST(install, what_a_good_script_leaves_running_goes_on) {
    const outcome end = unit()
                            .model("13")
                            .install_script("#!/bin/sh\n"
                                            "(sleep 30; echo finished > /tmp/later) &\n"
                                            "exit 0\n")
                            .acknowledge_end(40s)
                            .run(limited);
    EXPECT_TRUE(succeeded(end));
    EXPECT_FALSE(end.has("signal 9"));
    EXPECT_EQ(end.file("/tmp/later"), "finished\n");
}

TEST(install, script_without_a_limit_may_take_its_time) {
    const outcome end =
        usual_unit().install_script("#!/bin/sh\nsleep 300\necho done\n").run(unlimited);
    EXPECT_TRUE(end.has("out wait -1 sec..."));
    EXPECT_FALSE(end.has("killall install.sh"));
    EXPECT_TRUE(succeeded(end));
    EXPECT_GE(*end.when("out status 0") - *end.when("out fork_exec"), 300s);
}

TEST(install, own_copy_follows_the_version_files) {
    struct {
        const char *pack_version;
        const char *data_version; // null: no such file
        bool copied;
        const char *lines;
    } const cases[] = {
        {"renewer_version:v1.1.4\n", "renewer_version:v1.1.4\n", true,
         "pack version 1.1.4\n\ndata version 1.1.4\n\n"},
        {"renewer_version:v1.1.10", "renewer_version:v1.1.9", true,
         "pack version 1.1.10\ndata version 1.1.9\n"},
        {"short", "renewer_version:v1.1.4", false, "pack version \ndata version 1.1.4\n"},
        {"", "", true, "pack version \ndata version \n"},
        {"renewer_version:v1.1.4.123456789012345\n", "renewer_version:v1.1.4\n", true,
         "pack version 1.1.4.12345678\ndata version 1.1.4\n\n"},
    };
    for (const auto &[pack_version, data_version, copied, lines] : cases) {
        SCOPED_TRACE(pack_version);
        const outcome end = usual_unit()
                                .file("/tmp/pack_version", pack_version)
                                .file("/tmp/data_version", data_version)
                                .run(limited);
        EXPECT_NE(end.output().find(std::string("this is new version checkupdate\r\n") + lines),
                  std::string::npos)
            << end.output();
        EXPECT_EQ(end.file("/data/sbin/renewer"),
                  copied ? "the updater of this update\n" : "the installed updater\n");
        EXPECT_EQ(end.exists("/data/sbin/update/renewer"), copied);
        EXPECT_TRUE(succeeded(end));
    }
}

TEST(install, version_file_that_cannot_be_opened_fails_the_update) {
    const outcome end =
        usual_unit().file("/tmp/pack_version", "renewer_version:v1.1.4\n").run(limited);
    EXPECT_TRUE(end.has("out status 0"));
    EXPECT_TRUE(end.has("err fopen: No such file or directory"));
    EXPECT_EQ(end.file("/data/sbin/renewer"), "the installed updater\n");
    EXPECT_FALSE(succeeded(end));
}

TEST(install, pipe_in_place_of_a_version_file_does_not_block) {
    const outcome end = usual_unit()
                            .does(
                                "make a pipe",
                                [](const std::filesystem::path &root) {
                                    mkfifo((root / "tmp/pack_version").c_str(), 0600);
                                },
                                at(0ms))
                            .file("/tmp/data_version", "renewer_version:v1.1.4\n")
                            .run(limited);
    EXPECT_NE(end.output().find("pack version \ndata version 1.1.4\n"), std::string::npos);
    EXPECT_EQ(end.exit_status, 1);
}

TEST(install, own_copy_keeps_a_directory_that_exists) {
    const outcome end = usual_unit().directory("/data/sbin/update").run(limited);
    EXPECT_TRUE(end.has("out /data/sbin/update already exist\r"));
    EXPECT_FALSE(end.has("shell mkdir"));
    EXPECT_EQ(end.file("/data/sbin/update/renewer"), "the updater of this update\n");
}

TEST(install, failing_own_copy_does_not_fail_the_update) {
    const outcome end = usual_unit().without("/firmware/update/renewer.bin").run(limited);
    EXPECT_NE(end.errors().find("cp: cannot stat '/firmware/renewer.bin'"), std::string::npos);
    EXPECT_TRUE(succeeded(end));
}

TEST(install, copies_the_update_with_its_links_and_directories) {
    const outcome end = usual_unit()
                            .file("/firmware/update/dir with blank/file", "content")
                            .link("/firmware/update/link", "nowhere")
                            .run(limited);
    EXPECT_EQ(end.file("/firmware/dir with blank/file"), "content");
    EXPECT_NE(end.listing("/firmware").find("\nlink link\n"), std::string::npos);
    EXPECT_EQ(end.file("/data/app/log/update.log")->substr(0, 21), "installing\ninstalled\n");
}

} // namespace
