// The desk as it is started, without a terminal, and what it draws on one.

#include "simulator/terminal/front_panel.h"
#include "simulator/terminal/led_view.h"
#include "simulator/terminal/screen_view.h"
#include "simulator/unit/temporary_directory.h"
#include "tests/support/command.h"
#include "tests/support/files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

using namespace simulator;
using testing::HasSubstr;
using testing::Not;

namespace {

namespace fs = std::filesystem;

std::string last_line_of(const std::string &output) {
    const std::string lines = output.substr(0, output.find_last_not_of('\n') + 1);
    return lines.substr(lines.rfind('\n') + 1);
}

// The directory in which the desk works and leaves its own directories: empty after each command.
struct work_directory : temporary_directory {
    const std::string in = "cd '" + path.string() + "' && TMPDIR='" + path.string() + "/tmp' ";

    work_directory() {
        fs::create_directories(path / "tmp");
        put("good.sh", "#!/bin/sh\necho working\n");
        put("bad.sh", "#!/bin/sh\necho no room for the kernel\nexit 3\n");
        put("hang.sh", "#!/bin/sh\nsleep 1000\n");
        put("log", "new host pack!\n2,3 PN fit!\ncoming................updating1110\n");
        fs::create_directories(path / "unpacked");
        fs::copy(path / "good.sh", path / "unpacked/install.sh");
        for (const std::string name : {"good", "bad", "hang"}) {
            run_command(in + PACK " create -q -o " + name + ".bin --version 1.1.4.0 " +
                        "--pn 1013563400120000 --revision 1a2b3c4d install=" + name +
                        ".sh renewer=good.sh");
        }
        put("cut.bin", std::string("\x03\x77\x00\x77", 4));
    }
    void put(const char *name, const std::string &text) const {
        put_file(path / name, text);
        fs::permissions(path / name, fs::perms(0755));
    }
    ended_command desk(const std::string &options) const {
        return run_command(in + DESK " " + options + " 2>&1");
    }
    std::ptrdiff_t left() const { return std::distance(fs::directory_iterator(path / "tmp"), {}); }
};

// A command line, its exit status, and how its last line begins.
struct row {
    std::string command;
    int status;
    const char *last_line;
};

void expect_rows(std::initializer_list<row> rows) {
    const work_directory work;
    for (const auto &[command, status, last_line] : rows) {
        const ended_command end = command.starts_with("timeout")
                                      ? run_command(work.in + command + " " DESK " demo 2>&1")
                                      : work.desk(command);
        EXPECT_EQ(end.status, status) << command << "\n" << end.output;
        EXPECT_TRUE(last_line_of(end.output).starts_with(last_line)) << command << "\n"
                                                                     << end.output;
        EXPECT_EQ(work.left(), 0) << command;
    }
}

TEST(renewer_desk, judges_installs) {
    expect_rows({
        {"demo --speed 40", 0, "UPDATED"},
        {"run good.bin --speed 40", 0, "UPDATED"},
        {"run unpacked --speed 40", 0, "UPDATED"},
        {"run bad.bin --speed 40", 1, "FAILED (script status 3, twice)"},
        {"run bad.bin --speed 40 --expect failed", 0, "FAILED (script status 3, twice)"},
        {"run hang.bin --speed 200", 1,
         "FAILED (the script ran over its limit of 60 s, and was tried twice)"},
        {"run good.bin --speed 40 --disk-full-at 'prints coming'", 1,
         "FAILED (the update could not be copied into /firmware)"},
        {"run good.bin --speed 10 --answer decline --expect declined", 0,
         "DECLINED (the power key was pressed twice)"},
        {"run good.bin --speed 400 --answer none", 1, "DECLINED (nobody answered within 120 s)"},
    });
}

TEST(renewer_desk, judges_refusals_and_logs) {
    expect_rows({
        {"run good.bin --speed 40 --model screen --expect refused", 0,
         "REFUSED (part number: the package is for model 13, this unit is 16)"},
        {"run unpacked --speed 40 --unit " UNITS "/low-battery.yaml", 1,
         "REFUSED (battery 27 %, no external supply; 30 % are needed)"},
        {"run unpacked --speed 40 --model screen --without /dev/spidev1.0", 1,
         "REFUSED (display: the LCD cannot be opened)"},
        {"run good.bin --speed 40 --path /mnt/x", 1,
         "REFUSED (path: packages below /mnt are not installed)"},
        {"run good.bin --speed 40 --without /update/hw/sys", 1,
         "REFUSED (host information: /update/hw/sys cannot be read)"},
        {"run cut.bin --expect refused", 0, "REFUSED (package: the digest is d41d8cd9"},
        {"run good.bin --speed 40 --cut-power-at 'runs cp /firmware/renewer.bin' --expect cut", 0,
         "CUT (the power was cut while replacing the updater's own copy and showing the result)"},
        {"run good.bin --speed 40 --unit " UNITS "/power-cut.yaml", 0, "UPDATED"},
        {"run good.bin --speed 100 --acknowledge never --patience 8s", 0,
         "UPDATED (the application never acknowledged the end)"},
        {"explain log", 0, "CUT (the log stops while starting the update)"},
        {"explain good.sh", 1, "Nothing in it was printed by the updater."},
    });
}

TEST(renewer_desk, leaves_nothing_when_interrupted) {
    expect_rows({
        {"timeout --preserve-status -s INT 2", 130, "INTERRUPTED"},
        {"run good.bin --speed 40 | head -1", 0, "A unit with LEDs; its application has"},
        {"run nowhere.bin", 3, "renewer-desk: nowhere.bin: cannot be read: No such file"},
        {"run good.bin --speed 40 --report /nowhere/x.html", 3,
         "renewer-desk: /nowhere/x.html: cannot be written"},
    });
}

TEST(renewer_desk, suggests_what_would_be_right) {
    expect_rows({
        {"run", 2, "renewer-desk: PACKAGE is required"},
        {"run good.bin --expect fine", 2,
         "renewer-desk: --expect takes updated, failed, declined, refused, cut, any"},
        {"demo --model oval", 2, "renewer-desk: --model takes led, screen or oled"},
        {"demo --built-in", 2, "renewer-desk: --built-in goes with a screen (--model screen)"},
        {"demo --model oled --answer ok", 2, "renewer-desk: --model oled takes"},
        {"demo --answer other", 2, "renewer-desk: --answer takes ok, power, decline or none"},
        {"demo --answer decline --speed 500", 2, "renewer-desk: two presses of the power key"},
        {"demo --battery full", 2, "renewer-desk: --battery: expected volts from 0 to 60"},
        {"demo --press ok", 2, "renewer-desk: --press: \"ok\" is not a key press; expected ok@2s"},
        {"demo --speed 0", 2, "renewer-desk: --speed takes a number from 0.1 to 1000"},
        {"demo more", 2, "renewer-desk: "},
    });
}

TEST(renewer_desk, reports_the_run_as_data_and_as_a_page) {
    const work_directory work;
    work.put("hostile.sh", "#!/bin/sh\necho '<script>alert(1)</script> {{x}} \\377'\nexit 1\n");
    const ended_command end =
        work.desk("demo --speed 40 --model screen --script hostile.sh --report r.html "
                  "--json r.json --pictures seen");
    EXPECT_EQ(last_line_of(end.output), "FAILED (script status 1, twice)") << end.output;
    EXPECT_THAT(end.output, HasSubstr("screen  picture-02.png\n"));
    EXPECT_THAT(end.output, Not(HasSubstr("\033")));
    EXPECT_THAT(end.output, HasSubstr("<script>alert(1)</script> {{x}}"));
    const auto seen = std::distance(fs::directory_iterator(work.path / "seen"), {});

    const nlohmann::json data = nlohmann::json::parse(get_file(work.path / "r.json"));
    EXPECT_EQ(data["verdict"]["word"], "FAILED");
    const nlohmann::json &run = data["runs"][0];
    EXPECT_GE(std::ssize(run["pictures"]), seen);
    const auto changed = std::ranges::find_if(
        run["files"], [](const auto &one) { return one["path"] == "/firmware/install.sh"; });
    ASSERT_NE(changed, run["files"].end());
    EXPECT_TRUE((*changed)["before"].is_null());
    const std::string digest = run_command(work.in + "sha256sum hostile.sh").output;
    EXPECT_EQ((*changed)["after"]["sha256"], digest.substr(0, 64));

    const std::string page = get_file(work.path / "r.html");
    EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt; {{x}}"));
    EXPECT_THAT(page, HasSubstr("<img src=\"data:image/png;base64,iVBOR"));
    for (const char *loaded : {"<script", "http:", "https:", "<link", "@import"}) {
        EXPECT_THAT(page, Not(HasSubstr(loaded)));
    }
}

// A pattern is reported when the thread that shows it pauses, not after a time.
TEST(terminal, reports_patterns_once_they_are_complete) {
    led_view view;
    const auto line_of = [&](event happened) {
        const std::string line = view.line_for(happened);
        view.take(happened);
        return line;
    };
    EXPECT_EQ(line_of({1s, event_kind::led, "Light_Charge 255", true}), "");
    EXPECT_EQ(line_of({2s, event_kind::sleep, "10 s", false}), ""); // of another thread
    EXPECT_EQ(line_of({3s, event_kind::led, "Light_Static_Data 0", false}), "");
    EXPECT_EQ(line_of({4s, event_kind::out, "x\n", false}), "");
    EXPECT_THAT(line_of({5s, event_kind::sleep, "0.5 s", true}),
                HasSubstr("5.000 s  panel   \u25cb ST"));
    EXPECT_EQ(line_of({6s, event_kind::sleep, "0.5 s", true}), "");
}

TEST(terminal, panels_fit_the_window) {
    picture seen = {294, 126, std::vector<uint8_t>(size_t{294} * 126 * 3, 255)};
    std::fill_n(seen.rgb.begin(), seen.rgb.size() / 2, uint8_t{0});
    const screen_view screen("", seen);
    const led_view leds;
    const struct {
        const panel_view &view;
        drawing_room room;
        int width, lines;
        const char *shown;
    } cases[] = {
        {screen, {120, 50, true}, 120, 28, "|\033[38;2;0;0;0m\033[48;2;0;0;0m\u2580\u2580"},
        {screen, {80, 50, true}, 80, 19, "|\033[38;2;255;255;255m\033[48;2;255;255;255m\u2580"},
        {screen, {400, 200, true}, 296, 66, "\u2580"},
        {screen, {120, 17, true}, 58, 15, "\u2580"},
        {screen, {20, 24, false}, 20, 6, "|@@@@@@@@@@@@@@@@@@|"},
        {leds, {80, 24, true}, 60, 5, "\033[90m\u25cb\033[0m STATIC"},
        {leds, {30, 24, false}, 30, 7, "|  \u25cb STATIC  \u25cb GPS"},
        {leds, {20, 24, false}, 20, 10, "|  [ power ]  "},
    };
    for (const auto &[view, room, width, lines, shown] : cases) {
        const std::string drawing = view.draw(room);
        EXPECT_EQ(std::ranges::count(drawing, '\n'), lines) << drawing;
        EXPECT_EQ(drawing.find('\n'), static_cast<size_t>(width)) << drawing;
        EXPECT_THAT(drawing, HasSubstr(shown));
    }
}

} // namespace
