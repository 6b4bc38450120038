// Which packages a unit installs, and what it prints about those that it refuses.

#include "tests/run/order.h"
#include "tests/run/usual_unit.h"
#include "tests/support/pack_tmp.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

// The unit has GNSS board 34 and radio 12.
constexpr const char path[] = "/firmware/update";

TEST(part_number, fitting_packages_are_installed) {
    struct {
        std::vector<std::string> arguments;
        const char *lines;
    } const cases[] = {
        {{"0", path, "13"}, "old host pack!\nhost 2,3 PN fit!\n"},
        {{"  +0x", path, "13 and more"}, "old host pack!\nhost 2,3 PN fit!\n"},
        {{"1", path, "34"}, "gnss pack!\ngnss 6,7 PN fit!\n"},
        {{"2", path, "62"}, "radio pack!\n10,11 PN OK!\n"},
        {{"2", path, "12"}, "radio pack!\nK618 RADIO !\n"},
        {{"2", path, "10"}, "radio pack!\nQ7 K618 RADIO !\n"},
        {{"5", path}, "################update coming!#####################\n"},
        {{"5", "/data/my_firmware"}, "################update coming!#####################\n"},
        {{"4294967296", path}, "################update coming!#####################\n"},
    };
    for (const auto &[arguments, lines] : cases) {
        const outcome end = usual_unit().run(arguments);
        SCOPED_TRACE(arguments[0] + " " + arguments.back());
        EXPECT_TRUE(end.output().starts_with(lines)) << end.output();
        EXPECT_EQ(end.file("/data/sbin/renewer"), "the updater of this update\n");
        EXPECT_EQ(end.exit_status, 1);
    }
}

TEST(part_number, others_are_refused_before_anything_is_touched) {
    struct {
        std::vector<std::string> arguments;
        const char *lines;
    } const cases[] = {
        {{"0", path, "16"}, "old host pack!\nhost 2,3 PN not fit!\n"},
        {{"0", path, "1"}, "old host pack!\nhost 2,3 PN not fit!\n"},
        {{"1", path, "13"}, "gnss pack!\ngnss 6,7 PN not fit!\n"},
        {{"2", path, "13"}, "radio pack!\npn radio not fit\n"},
        {{"2", path, "72"}, "radio pack!\npn radio not fit\n"},
        {{"2", path, "60"}, "radio pack!\npn radio not fit\n"},
        {{"5", "/mnt/usb/update"}, "package path mnt  not allow\r\n"},
        {{"0", "/mnt", "16"}, "package path mnt  not allow\r\n"},
    };
    for (const auto &[arguments, lines] : cases) {
        const outcome end = usual_unit().run(arguments);
        SCOPED_TRACE(arguments[0] + " " + arguments.back());
        EXPECT_EQ(end.output(), lines);
        EXPECT_EQ(end.transcript({event_kind::shell, event_kind::led, event_kind::exit}),
                  "shell touch /tmp/update_over\n"
                  "shell sync\n"
                  "exit status 0\n");
    }
}

TEST(part_number, new_host_package_is_checked_against_its_own_header) {
    const outcome end =
        usual_unit().file("/data/app/log/pack_tmp", pack_tmp("1013563400120000")).run({"3", path});
    EXPECT_TRUE(
        in_order(end, {"out new host pack!", "out magic          : 0x77007703",
                       "out pn             : 1013563400120000", "out version_content: 1.1.4.0",
                       "out 2,3 PN fit!", "out wait 60 sec..."}));
    EXPECT_EQ(end.exit_status, 1);
}

TEST(part_number, new_host_package_for_another_unit_is_refused) {
    std::string unterminated = pack_tmp("1016563400120000");
    unterminated.replace(32, 20, 20, '7');
    const struct {
        std::string header;
        std::string lines;
    } cases[] = {
        {pack_tmp("1016563400120000"), "pn=1016563400120000\npn2=1,pn3=6,st2=1,st3=3\n"},
        {unterminated, "pn=77777777777777777777\npn2=7,pn3=7,st2=1,st3=3\n"},
        // The part number lies within the 50 bytes that are there; the version text does not.
        {pack_tmp("1016563400120000").substr(0, 50),
         "pn=1016563400120000\npn2=1,pn3=6,st2=1,st3=3\n"},
        {"", std::string("pn=\npn2=\0,pn3=\0,st2=1,st3=3\n", 28)}, // none
    };
    for (const auto &[header, lines] : cases) {
        unit it = usual_unit();
        header.empty() ? it : it.file("/data/app/log/pack_tmp", header);
        const outcome end = it.run({"3", "/media/sda1/update", "13"});
        EXPECT_TRUE(end.output().ends_with(lines + "2,3 PN not fit!\n")) << end.output();
        EXPECT_FALSE(end.has("shell killall"));
        EXPECT_EQ(end.exit_status, 0);
    }
}

TEST(part_number, host_record_decides_who_the_unit_is) {
    const std::string refused = "old host pack!\nhost 2,3 PN not fit!\n";
    const outcome missing = usual_unit().without("/update/hw/sys").run({"0", path, "13"});
    EXPECT_EQ(missing.errors(),
              "open sys err: No such file or directory\nget_local_host_info() failure\n");
    EXPECT_EQ(missing.output(), "");
    EXPECT_EQ(missing.exit_status, 0);
    for (unit it : {usual_unit().file("/update/hw/sys", "unit 1 101"),
                    usual_unit().file("/update/hw/sys", ""),
                    usual_unit().without("/update/hw/sys").directory("/update/hw/sys")}) {
        EXPECT_EQ(it.run({"0", path, "13"}).output(), refused);
    }
}

TEST(part_number, short_host_record_fits_no_package) {
    for (const std::vector<std::string> &arguments :
         {std::vector<std::string>{"1", path, ""}, {"2", path, ""}, {"3", path}}) {
        const outcome end = usual_unit().file("/update/hw/sys", "unit 1 ").run(arguments);
        EXPECT_FALSE(end.has("shell killall")) << end.transcript();
        EXPECT_EQ(end.exit_status, 0);
    }
}

TEST(part_number, unit_without_prompts_is_refused_after_the_application_is_stopped) {
    const outcome end = usual_unit().model("15").run({"0", path, "15"});
    EXPECT_EQ(end.transcript({event_kind::out, event_kind::shell, event_kind::led}),
              "out old host pack!\n"
              "out host 2,3 PN fit!\n"
              "shell killall S080_application\n"
              "shell /etc/init.d/S080_application stop\n"
              "out Update status init err\n"
              "shell touch /tmp/update_over\n"
              "shell sync\n");
    EXPECT_EQ(end.exit_status, 0);
}

} // namespace
