// Whole updates on a unit with the colour LCD: what its user sees, what goes over the wire, and
// what its supplies allow.

#include "simulator/unit/unit.h"
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

// Goes on until the desk has seen enough of the animation.
constexpr const char waiting_script[] =
    "#!/bin/sh\nwhile [ ! -e /tmp/enough ]; do sleep 0.2; done\n";

unit screen_unit() {
    unit it;
    it.model("16").acknowledge_end(200ms).clock_speed(100);
    return it;
}

std::string adc_file(int channel) {
    return "/sys/bus/iio/devices/iio:device0/in_voltage" + std::to_string(channel) + "_raw";
}

int occurrences(const std::string &text, const std::string &part) {
    int found = 0;
    for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) {
        ++found;
    }
    return found;
}

// Each picture came as a window, a memory write and 19 transfers; the last one is still there.
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

TEST(screen, wire_of_the_start_and_of_the_question) {
    const outcome end =
        screen_unit().with_prompt_pictures().press(key::esc, asked).run(with_question);

    std::string expected = "shell killall S080_application\n"
                           "shell /etc/init.d/S080_application stop\n"
                           "shell echo 255 > /sys/class/leds/Oled_Power/brightness\n"
                           "led Oled_Power 255\n"
                           "sleep 0.005 s\n"
                           "shell echo 255 > /sys/class/leds/Oled_Rst/brightness\n"
                           "led Oled_Rst 255\n"
                           "sleep 0.005 s\n"
                           "shell echo 0   > /sys/class/leds/Oled_Rst/brightness\n"
                           "led Oled_Rst 0\n"
                           "sleep 0.005 s\n"
                           "shell echo 255 > /sys/class/leds/Oled_Rst/brightness\n"
                           "led Oled_Rst 255\n"
                           "sleep 0.015 s\n"
                           "spi command FE\nspi data 00\n"
                           "spi command 2A\nspi data 00\nspi data 00\nspi data 00\nspi data 7D\n"
                           "spi command 2B\nspi data 00\nspi data 00\nspi data 01\nspi data 25\n"
                           "spi command 35\nspi data 00\n"
                           "spi command 51\nspi data FF\n"
                           "spi command 3A\nspi data 05\n"
                           "spi command 11\nsleep 0.15 s\n"
                           "spi command 29\nsleep 0.15 s\n"
                           "spi command 2A\nspi data 00 00 00 7D\n"
                           "spi command 2B\nspi data 00 00 01 25\n"
                           "spi command 2C\n";
    for (int chunk = 0; chunk < 18; ++chunk) {
        expected += "spi pixels 4096\n";
    }
    expected += "spi pixels 360\nscreen picture 0\nwait 120 s\n";
    const std::string wire =
        end.transcript({event_kind::shell, event_kind::led, event_kind::spi, event_kind::sleep,
                        event_kind::wait, event_kind::screen});
    EXPECT_EQ(wire.substr(0, expected.size()), expected);
    expect_good_wire(end);
}

TEST(screen, first_event_decides) {
    const std::string synchronisation(16, '\0');
    const struct {
        const char *what;
        unit described;
        const char *told; // what is printed of the key
        bool confirmed;
    } cases[] = {
        {"ok", screen_unit().press(key::ok, asked), "key 2 enter", true},
        {"another key", screen_unit().press(key::esc, asked), "key 7 enter", false},
        {"ok released, held before", screen_unit().key_event(2, 0, asked), "key 12 enter", false},
        {"synchronisation before ok",
         screen_unit()
             .write("/dev/input/event1", synchronisation, asked)
             .press(key::ok, after("wait", 3s)),
         "key -1 enter", false},
        {"dead key device", screen_unit().dead_key_device(), "key -1 enter", false},
        {"failing key device", screen_unit().failing_key_device(), "key -1 enter", false},
        {"silence", screen_unit(), nullptr, false},
        {"no key device", screen_unit().without("/dev/input/event1"), nullptr, false},
    };
    for (auto [what, described, told, confirmed] : cases) {
        SCOPED_TRACE(what);
        const outcome end = described.with_prompt_pictures().run(with_question);
        EXPECT_EQ(end.count("wait 120 s"), 1);
        EXPECT_EQ(end.count(" enter"), told == nullptr ? 0 : 1);
        EXPECT_TRUE(told == nullptr || end.has(told)) << end.output();
        EXPECT_EQ(shown_with_animation(end),
                  confirmed ? "confirm animation success" : "confirm notallow");
        EXPECT_EQ(end.exit_status, confirmed ? 1 : 0);
        EXPECT_EQ(end.file("/data/sbin/renewer"),
                  confirmed ? "the updater of this update\n" : "the installed updater\n");
        EXPECT_EQ(end.exists("/tmp/update_flag"), confirmed);
        expect_good_wire(end);
        if (told == nullptr) {
            EXPECT_GE(*end.when("user canceled"), 120s);
        }
    }
}

TEST(screen, declined_run_ends_at_once) {
    const outcome end =
        screen_unit().with_prompt_pictures().press(key::up, asked).run(with_question);
    const std::string all = end.transcript({event_kind::out, event_kind::shell, event_kind::screen,
                                            event_kind::sleep, event_kind::exit});
    EXPECT_EQ(all.substr(all.find("out get the")), "out get the code is :6.\n"
                                                   "out key 6 enter\n"
                                                   "out user canceled  update program\n"
                                                   "screen picture 1\n"
                                                   "sleep 4 s\n"
                                                   "shell touch /tmp/update_over\n"
                                                   "shell sync\n"
                                                   "sleep 1 s\n"
                                                   "exit status 0\n");
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
        EXPECT_LT(good.when("sleep 10 s"), good.when(result));
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

// A BMP file with all that its header promises.
std::string bmp(int width, int height, int bits) {
    std::string file = "BM";
    file.resize(54, '\0');
    const auto put = [&](size_t at, int value) {
        file.replace(at, 4, reinterpret_cast<const char *>(&value), 4);
    };
    put(10, 54);
    put(14, 40);
    put(18, width);
    put(22, height);
    put(26, 1 | bits << 16);
    const int row = (width * bits / 8 + 3) / 4 * 4;
    return file + std::string(static_cast<size_t>(row * std::abs(height)), '\x55');
}

TEST(screen, broken_pictures_are_told_and_replaced) {
    const struct {
        std::string what;
        std::string file;
        std::vector<const char *> told;
    } cases[] = {
        {"empty", "", {"bmp head err\n", "read bmp err\n"}},
        {"cut in the header",
         bmp(294, 126, 24).substr(0, 53),
         {"bmp head err\n", "read bmp err\n"}},
        {"cut in the pixels",
         bmp(294, 126, 24).substr(0, 60'000),
         {"bmp head err\n", "read bmp err\n"}},
        {"not BMP", "\x89PNG\r\n" + bmp(294, 126, 24), {"bmp head err\n", "read bmp err\n"}},
        {"8 bits", bmp(294, 126, 8), {"bmp bit count err\n", "read bmp err\n"}},
        {"32 bits", bmp(294, 126, 32), {"bit count is 4\n"}},
        {"top row first", bmp(294, -126, 24), {"malloc err\n", "read bmp err\n"}},
        {"too wide", bmp(295, 126, 24), {"out of range\n"}},
        {"too high", bmp(294, 127, 24), {"out of range\n"}},
    };
    for (const auto &[what, file, told] : cases) {
        SCOPED_TRACE(what);
        unit it = screen_unit().press(key::ok, asked);
        for (const char *name : {"confirm", "updating_0", "success"}) {
            it.file(std::string("/reserve/update/") + name + ".bmp", file);
        }
        const outcome end = it.run(with_question);
        EXPECT_EQ(shown(end), "update_now_bmp updating_bmp update_success_bmp");
        EXPECT_EQ(end.count("spi command 2C"), 3) << "nothing of the broken ones was sent";
        for (const char *line : told) { // other lines may come between those of the animation
            EXPECT_EQ(occurrences(end.output(), line), 3) << line;
        }
        const std::ptrdiff_t errors = std::ranges::count_if(
            told, [](const std::string &line) { return line.ends_with("err\n"); });
        EXPECT_EQ(occurrences(end.output(), "err\n"), 3 * errors);
        expect_good_wire(end);
    }
}

TEST(screen, animation_runs_through_the_frames_that_there_are) {
    const struct {
        int frames;
        const char *awaited; // the first picture is the question
    } cases[] = {{12, "screen picture 15"}, {3, "screen picture 8"}};
    for (const auto &[frames, awaited] : cases) {
        unit it = screen_unit();
        it.with_prompt_pictures().install_script(waiting_script).press(key::ok, asked);
        std::string cycle;
        for (int frame = 0; frame < 12; ++frame) {
            const std::string name = "updating_" + std::to_string(frame);
            if (frame < frames) {
                cycle += name + "\n1 s\n";
            } else {
                it.without("/reserve/update/" + name + ".bmp");
            }
        }
        const std::string missing =
            "open /reserve/update/updating_" + std::to_string(frames) + ".bmp failed\n";
        cycle += missing + "1 s\n";

        const outcome end = it.write("/tmp/enough", "", after(awaited, 0s)).run(with_question);
        const std::vector<std::string> names = shown_names(end);
        std::string seen;
        for (auto name = names.begin(); const event &one : end.events) {
            if (one.kind == event_kind::screen) {
                seen += *name++ + "\n";
            } else if (one.line() == "sleep 1 s" || one.text == missing) {
                seen += one.kind == event_kind::sleep ? "1 s\n" : missing;
            }
        }
        const std::string ending = "success\n1 s\n"; // and the sleep after the end marker
        std::string expected = "confirm\n";
        while (expected.size() < seen.size()) {
            expected += cycle;
        }
        ASSERT_GT(seen.size(), cycle.size());
        EXPECT_EQ(seen, expected.substr(0, seen.size() - ending.size()) + ending);
        expect_good_wire(end);
    }
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
    EXPECT_LT(end.when("act remove /tmp/update_over"), end.when("exit status 0"));
}

// 20 transfers start the panel, 24 show a picture. What fails is not sent again, what follows is
// still sent, and the update goes on.
TEST(screen, failing_transfers_do_not_stop_the_update) {
    const struct {
        int working;
        int failed_commands, failed_data;
        const char *pictures;
        int columns; // of the question, from the right, on the panel
    } cases[] = {
        {0, 8 + 3 * 3, 12 + 3 * 21, "", 0},
        {3, 6 + 3 * 3, 11 + 3 * 21, "", 0},
        {20 + 5 + 9, 2 * 3, 10 + 2 * 21, "", 9 * 2048 / 126},
        {20 + 23, 2 * 3, 1 + 2 * 21, "", 18 * 2048 / 126},
        {20 + 24, 2 * 3, 2 * 21, "confirm", 294},
    };
    for (const auto &[working, failed_commands, failed_data, pictures, columns] : cases) {
        SCOPED_TRACE(working);
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
        const picture expected = read_bmp(PROMPT_PICTURES "/confirm.bmp");
        const picture seen = end.panel.seen();
        for (int x = 294 - columns; x < 294; ++x) {
            for (size_t y = 0; y < 126; ++y) {
                const size_t at = (y * 294 + static_cast<size_t>(x)) * 3;
                ASSERT_TRUE(std::equal(&seen.rgb[at], &seen.rgb[at] + 3, &expected.rgb[at])) << x;
            }
        }
        EXPECT_EQ(end.file("/data/sbin/renewer"), "the updater of this update\n");
        EXPECT_EQ(end.exit_status, 1);
    }
}

// Counts of the converter: battery 741 is 3.42 V a cell and 27 % (no count gives 28 or 29 %), 742
// is 3.43 V and 30 %; DC input 187 is 7.98 V, 188 is 8.02 V; type-C 255 is 4.487 V, 256 is 4.504 V.
TEST(screen, supplies_decide_whether_the_update_may_begin) {
    const auto supplied = [](int battery, int dc, int type_c) {
        unit it = screen_unit();
        it.adc(1, std::to_string(battery) + "\n").adc(2, std::to_string(dc) + "\n");
        return it.adc(3, std::to_string(type_c) + "\n");
    };
    constexpr const char mode_file[] = "/sys/kernel/debug/ffd00000.dwc3/mode";
    const std::string device = "usb state usb state devi\n";
    const std::string host = "usb state usb state host\nusb otg";
    const struct {
        const char *what;
        unit described;
        std::string usb; // what is printed of it
        bool dc, type_c;
        int percent;
        bool allowed;
    } cases[] = {
        {"27 %", supplied(741, 0, 0), "", false, false, 27, false},
        {"30 %", supplied(742, 0, 0), "", false, false, 30, true},
        {"DC", supplied(0, 188, 0), "", true, false, 0, true},
        {"too little DC", supplied(0, 187, 0), "", false, false, 0, false},
        {"type-C", supplied(741, 0, 256), device, false, true, 27, true},
        {"too little type-C", supplied(741, 0, 255), "", false, false, 27, false},
        {"host", supplied(741, 0, 256).usb_mode("host"), host, false, false, 27, false},
        {"host, charged", supplied(742, 0, 256).usb_mode("host"), host, false, false, 30, true},
        {"host, DC", supplied(0, 188, 256).usb_mode("host"), host, true, false, 0, true},
        {"no USB mode", supplied(0, 0, 256).without(mode_file), "", false, true, 0, true},
        {"no converter", screen_unit().without("/sys/bus/iio"), "", false, false, 0, false},
        {"no battery input", supplied(742, 0, 0).without(adc_file(1)), "", false, false, 0, false},
        {"no DC input", supplied(742, 188, 0).without(adc_file(2)), "", false, false, 30, true},
        {"no type-C input", supplied(0, 0, 256).without(adc_file(3)), "", false, false, 0, false},
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
    std::string readings;
    for (const char *signal : {"bat1_vol", "ext_vol", "typeC_vol"}) {
        for (int reading = 0; reading < 10; ++reading) {
            readings += std::string("out ret=46,") + signal + "=0.000000\n";
        }
        readings += std::string("out ") + signal + "_sum=0.000000\n";
    }
    const std::string all =
        end.transcript({event_kind::out, event_kind::err, event_kind::shell, event_kind::screen,
                        event_kind::sleep, event_kind::wait, event_kind::exit});
    const std::string expected = "out type_ardeaplus=0\n"
                                 "out machine_type=0,type_pica=0\n"
                                 "out !!!!!!!!!!!!!!!\n" +
                                 readings +
                                 "out ext_status:0, type_c_status:0\n"
                                 "out ext!!!!!!!!!!!!! power 0 bat1 0 \n"
                                 "screen picture 0\n"
                                 "sleep 4 s\n"
                                 "out  no ext power and baterry low , cannot  update program\n"
                                 "shell sync\n"
                                 "shell touch /tmp/update_over\n"
                                 "shell sync\n"
                                 "sleep 1 s\n";
    EXPECT_EQ(all.substr(all.find("out type_ardea"), expected.size()), expected);
}

} // namespace
