// Whole updates on a unit with the colour LCD: what its user sees, what goes over the wire, and
// what its supplies allow.

#include "simulator/unit/unit.h"
#include "tests/run/order.h"
#include "tests/support/pictures.h"
#include "tests/support/shown_pictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

using namespace simulator;
using testing::HasSubstr;

namespace {

const std::vector<std::string> with_question = {"1", "/media/sda1/update", "34"};
const std::vector<std::string> without_question = {"5", "/firmware/package"};
const moment asked = after("wait 120 s", 1s);

// Runs until the test has seen enough of the animation.
constexpr const char waiting_script[] =
    "#!/bin/sh\nwhile [ ! -e /tmp/enough ]; do sleep 0.2; done\n";

unit screen_unit() {
    unit it;
    it.model("16").acknowledge_end(200ms).clock_speed(100);
    return it;
}

int occurrences(const std::string &text, const std::string &part) {
    int found = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++found;
    }
    return found;
}

// Each picture is sent as a window, a memory write and 19 transfers; the last one is still shown.
void expect_good_wire(const outcome &end) {
    EXPECT_EQ(end.panel.faults(), sa1230_panel::fault_counts{});
    EXPECT_TRUE(end.panel.shows());
    const int written = end.count("spi command 2C");
    EXPECT_EQ(end.count("spi pixels 4096"), 18 * written);
    EXPECT_EQ(end.count("spi pixels 360"), written);
    EXPECT_EQ(end.count("spi pixels"), 19 * written);
    ASSERT_FALSE(end.pictures.empty());
    EXPECT_TRUE(end.panel.seen() == end.pictures.back());
}

TEST(screen, declined_run_from_its_start_to_its_end) {
    const outcome end =
        screen_unit().with_prompt_pictures().press(key::up, asked).run(with_question);
    const std::string reset = " > /sys/class/leds/Oled_Rst/brightness\n";
    EXPECT_EQ(end.transcript({event_kind::shell, event_kind::screen, event_kind::sleep,
                              event_kind::wait, event_kind::exit}),
              "shell killall S080_application\n"
              "shell /etc/init.d/S080_application stop\n"
              "shell echo 255 > /sys/class/leds/Oled_Power/brightness\n"
              "sleep 0.005 s\nshell echo 255" +
                  reset + "sleep 0.005 s\nshell echo 0  " + reset +
                  "sleep 0.005 s\nshell echo 255" + reset +
                  "sleep 0.015 s\nsleep 0.15 s\nsleep 0.15 s\n"
                  "screen picture 0\n"
                  "wait 120 s\n"
                  "screen picture 1\n"
                  "sleep 4 s\n"
                  "shell touch /tmp/update_over\n"
                  "shell sync\n"
                  "sleep 1 s\n"
                  "exit status 0\n");
    EXPECT_TRUE(in_order(
        end, {"out key 6 enter", "out user canceled  update program", "screen picture 1"}));
    EXPECT_EQ(shown(end), "confirm notallow");
    expect_good_wire(end);
}

TEST(screen, first_event_decides) {
    const std::string synchronisation(16, '\0');
    const struct {
        unit described;
        const char *printed; // of the key
        bool confirmed;
    } cases[] = {
        {screen_unit().press(key::ok, asked), "key 2 enter", true},
        {screen_unit()
             .write("/dev/input/event1", synchronisation, asked)
             .press(key::ok, after("wait", 3s)),
         "key -1 enter", false},
        {screen_unit().failing_key_device(), "key -1 enter", false},
        {screen_unit(), "", false},
        {screen_unit().without("/dev/input/event1"), "", false},
    };
    for (auto [described, printed, confirmed] : cases) {
        const outcome end = described.with_prompt_pictures().run(with_question);
        EXPECT_EQ(end.count("wait 120 s"), 1);
        EXPECT_EQ(end.count(" enter"), *printed == '\0' ? 0 : 1);
        EXPECT_TRUE(end.has(printed)) << end.output();
        EXPECT_EQ(shown_with_animation(end),
                  confirmed ? "confirm animation success" : "confirm notallow");
        EXPECT_EQ(end.exit_status, confirmed ? 1 : 0);
        EXPECT_EQ(end.file("/data/sbin/renewer"),
                  confirmed ? "the updater of this update\n" : "the installed updater\n");
        EXPECT_EQ(end.exists("/tmp/update_flag"), confirmed);
        EXPECT_TRUE(*printed != '\0' || *end.when("user canceled") >= 120s);
    }
}

TEST(screen, each_prompt_falls_back_to_its_built_in_picture) {
    const struct {
        const char *what;
        unit described;
        const char *installed;
        const char *failed;
    } cases[] = {
        {"all", screen_unit().with_prompt_pictures(), "confirm animation success",
         "confirm animation failure"},
        {"none", screen_unit(), "update_now_bmp updating_bmp update_success_bmp",
         "update_now_bmp updating_bmp update_failed_bmp"},
        {"no question, no first frame",
         screen_unit()
             .with_prompt_pictures()
             .without("/reserve/update/confirm.bmp")
             .without("/reserve/update/updating_0.bmp"),
         "update_now_bmp updating_bmp success", "update_now_bmp updating_bmp failure"},
        {"no results",
         screen_unit()
             .with_prompt_pictures()
             .without("/reserve/update/success.bmp")
             .without("/reserve/update/failure.bmp"),
         "confirm animation update_success_bmp", "confirm animation update_failed_bmp"},
    };
    for (auto [what, described, installed, failed] : cases) {
        SCOPED_TRACE(what);
        described.press(key::ok, asked);
        const outcome good = described.run(with_question);
        EXPECT_EQ(shown_with_animation(good), installed);
        const std::string result = "screen picture " + std::to_string(good.pictures.size() - 1);
        EXPECT_TRUE(in_order(good, {"sleep 10 s", result}));
        EXPECT_TRUE(good.has("call reboot"));
        expect_good_wire(good);

        // Lasts until the animation has begun.
        const outcome bad =
            described.install_script("#!/bin/sh\nsleep 2\nexit 1\n").run(with_question);
        EXPECT_EQ(shown_with_animation(bad), failed);
        EXPECT_TRUE(bad.has("call reboot"));
        expect_good_wire(bad);
    }
}

TEST(screen, broken_pictures_are_reported_and_replaced) {
    const bmp wide = {.width = 295, .height = 126, .pixel_bytes = 888 * 126};
    const struct {
        std::string file;
        const char *message;
    } cases[] = {{wide.first(60'000), "bmp head err\n"}, {wide.bytes(), "out of range\n"}};
    for (const auto &[file, message] : cases) {
        unit it = screen_unit().press(key::ok, asked);
        for (const char *name : {"confirm", "updating_0", "success"}) {
            it.file(std::string("/reserve/update/") + name + ".bmp", file);
        }
        const outcome end = it.run(with_question);
        EXPECT_EQ(shown(end), "update_now_bmp updating_bmp update_success_bmp");
        EXPECT_EQ(end.count("spi command 2C"), 3) << "the broken ones are not sent";
        EXPECT_EQ(occurrences(end.output(), message), 3);
        expect_good_wire(end);
    }
}

TEST(screen, animation_shows_a_frame_a_second_as_long_as_the_script_runs) {
    const outcome end = screen_unit()
                            .with_prompt_pictures()
                            .install_script(waiting_script)
                            .press(key::ok, asked)
                            .write("/tmp/enough", "", after("screen picture 15", 0s))
                            .run(with_question);
    std::string expected = "confirm";
    for (int frame = 0; frame < 15; ++frame) {
        expected += " updating_" + std::to_string(frame % 12);
    }
    EXPECT_TRUE(shown(end).starts_with(expected)) << shown(end);
    EXPECT_TRUE(shown(end).ends_with(" success")) << shown(end);
    EXPECT_GE(*end.when("screen picture 12") - *end.when("screen picture 1"), 11s);
    expect_good_wire(end);
}

TEST(screen, lcd_that_cannot_be_opened_ends_the_run) {
    const outcome end = screen_unit().without("/dev/spidev1.0").run(with_question);
    EXPECT_EQ(end.transcript({event_kind::out, event_kind::err, event_kind::shell, event_kind::led,
                              event_kind::spi, event_kind::exit}),
              "out gnss pack!\n"
              "out gnss 6,7 PN fit!\n"
              "shell killall S080_application\n"
              "shell /etc/init.d/S080_application stop\n"
              "out spi_oled__open: /dev/spidev1.0 error!\n" // the prompts prepare themselves
              "out open err\n"
              "out spi_oled__open: /dev/spidev1.0 error!\n" // and are asked to
              "out open err\n"
              "out Update status init err\n"
              "shell touch /tmp/update_over\n"
              "shell sync\n"
              "exit status 0\n");
    EXPECT_TRUE(in_order(end, {"act remove /tmp/update_over", "exit status 0"}));
}

// 20 transfers start the panel, 24 show a picture. A failed transfer is not repeated, those after
// it are still made, and the update continues.
TEST(screen, failing_transfers_do_not_stop_the_update) {
    const struct {
        int working;
        int failed_commands, failed_data;
        const char *pictures;
    } cases[] = {
        {3, 6 + 3 * 3, 11 + 3 * 21, ""},
        {20 + 23, 2 * 3, 1 + 2 * 21, ""},
        {20 + 24, 2 * 3, 2 * 21, "confirm"},
    };
    for (const auto &[working, failed_commands, failed_data, pictures] : cases) {
        const outcome end = screen_unit()
                                .with_prompt_pictures()
                                .without("/reserve/update/updating_0.bmp")
                                .spi_transfers_that_work(working)
                                .press(key::ok, asked)
                                .run(with_question);
        EXPECT_EQ(occurrences(end.output(), "spi_write_cmd: ioctl command error!\n"),
                  failed_commands);
        EXPECT_EQ(
            occurrences(end.output(), "spi_write_data: ioctl command error Input/output error!\n"),
            failed_data);
        EXPECT_EQ(end.count("spi command") + end.count("spi data") + end.count("spi pixels"),
                  working);
        EXPECT_EQ(shown(end), pictures);
        EXPECT_EQ(end.panel.faults(), sa1230_panel::fault_counts{});
        EXPECT_EQ(end.file("/data/sbin/renewer"), "the updater of this update\n");
        EXPECT_EQ(end.exit_status, 1);
    }
}

// Counts of the converter: battery 741 is 3.42 V a cell and 27 % (no count is 28 or 29 %), 742
// is 3.43 V and 30 %; DC input 187 is 7.98 V, 188 is 8.02 V; type-C 255 is 4.487 V, 256 is 4.504 V.
TEST(screen, supplies_decide_whether_the_update_may_begin) {
    const auto supplied = [](int battery, int dc, int type_c) {
        unit it = screen_unit();
        it.adc(1, std::to_string(battery) + "\n").adc(2, std::to_string(dc) + "\n");
        return it.adc(3, std::to_string(type_c) + "\n");
    };
    constexpr const char mode_file[] = "/sys/kernel/debug/ffd00000.dwc3/mode";
    const std::string host = "usb state usb state host\nusb otg";
    const struct {
        const char *what;
        unit described;
        std::string usb; // the lines on it
        bool dc, type_c;
        int percent;
        bool allowed;
    } cases[] = {
        {"27 %", screen_unit().adc(1, "741\n").without_external_power(), "", false, false, 27,
         false},
        {"30 %", supplied(742, 0, 0), "", false, false, 30, true},
        {"DC", supplied(0, 188, 0), "", true, false, 0, true},
        {"too little of either", supplied(741, 187, 255), "", false, false, 27, false},
        {"host", supplied(741, 0, 256).usb_mode("host"), host, false, false, 27, false},
        {"no USB mode", supplied(0, 0, 256).without(mode_file), "", false, true, 0, true},
        {"no converter", screen_unit().without("/sys/bus/iio"), "", false, false, 0, false},
    };
    for (auto [what, described, usb, dc, type_c, percent, allowed] : cases) {
        SCOPED_TRACE(what);
        const outcome end = described.with_prompt_pictures().run(without_question);
        std::array<char, 100> decided;
        snprintf(decided.data(), decided.size(),
                 "ext_status:%d, type_c_status:%d\next!!!!!!!!!!!!! power %d bat1 %d \n", dc,
                 type_c, dc || type_c, percent);
        EXPECT_THAT(end.output(), HasSubstr("\n" + usb + decided.data()));
        EXPECT_EQ(end.has("err fopen: No such file or directory"),
                  what == std::string("no USB mode"));
        EXPECT_EQ(end.has("no ext power and baterry low"), !allowed);
        EXPECT_EQ(shown_with_animation(end), allowed ? "animation success" : "notallow");
        EXPECT_EQ(end.has("call reboot"), allowed);
        EXPECT_EQ(end.exit_status, allowed ? 1 : 0);
        expect_good_wire(end);
    }
}

TEST(screen, unit_with_leds_needs_no_charge) {
    const outcome end = screen_unit().model("13").without("/sys/bus/iio").run(without_question);
    EXPECT_FALSE(end.has("machine_type"));
    EXPECT_TRUE(end.has("call reboot"));
}

TEST(screen, refusal_without_power_keeps_its_order) {
    const outcome end =
        screen_unit().with_prompt_pictures().without("/sys/bus/iio").run(with_question);
    const std::string all = end.transcript({event_kind::out, event_kind::shell, event_kind::screen,
                                            event_kind::sleep, event_kind::wait, event_kind::exit});
    const std::string expected = "out ext_status:0, type_c_status:0\n"
                                 "out ext!!!!!!!!!!!!! power 0 bat1 0 \n"
                                 "screen picture 0\n"
                                 "sleep 4 s\n"
                                 "out  no ext power and baterry low , cannot  update program\n"
                                 "shell sync\n"
                                 "shell touch /tmp/update_over\n"
                                 "shell sync\n"
                                 "sleep 1 s\n";
    EXPECT_EQ(all.substr(all.find("out ext_status"), expected.size()), expected);
}

} // namespace
