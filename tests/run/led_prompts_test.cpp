#include "simulator/unit/unit.h"
#include "tests/run/order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <sys/resource.h>

using namespace simulator;
using testing::HasSubstr;
using testing::Not;

namespace {

unit led_unit() {
    return unit().model("13").program(PROMPT_DRIVER);
}

std::string five(const char *value) {
    std::string lines;
    for (const char *led :
         {"Light_Gps", "Light_Data_Se", "Light_Data_Re", "Light_Charge", "Light_Power"}) {
        lines += std::string("led ") + led + " " + value + "\n";
    }
    return lines;
}

const std::string five_on = five("255");
const std::string five_off = five("0");
const std::string static_on = "led Light_Static_Data 255\n";

// Result patterns of a unit whose PN characters 4 and 5 are not 56 to 59, and of one where they
// are.
const std::string three_on = "led Light_Gps 255\nled Light_Data_Se 255\nled Light_Power 255\n";
const std::string three_off = "led Light_Gps 0\nled Light_Data_Se 0\nled Light_Power 0\n";
const std::string charge_and_power = "led Light_Charge 255\nled Light_Power 255\n";

std::string leds_and_sleeps(const outcome &end) {
    return end.transcript({event_kind::led, event_kind::sleep});
}

int exact_count(const outcome &end, const std::string &line) {
    return static_cast<int>(
        std::ranges::count_if(end.events, [&](const event &e) { return e.line() == line; }));
}

TEST(led_prompts, confirm_answers) {
    const moment in_1_s = after("wait", 1s);
    const struct {
        unit described;
        std::string result;
        const char *decided_by; // by which event
        std::string printed;
    } cases[] = {
        {led_unit().press(key::ok, in_1_s), "prompt 1: 1", "press ok", "get a key\n@2  1 "},
        {led_unit().press(key::right, in_1_s).press(key::right, after("act release right", 100ms)),
         "prompt 1: 0", "act press right", "get the code is :13.\n"},
        {led_unit()
             .press(key::left, in_1_s)
             .press(key::power, in_1_s)
             .key_event(3, 1, in_1_s) // the power key is pressed and held
             .key_event(3, 2, in_1_s)
             .key_event(352, 1, in_1_s)
             .press(key::ok, after("wait", 4s)),
         "prompt 1: 1", "press ok", "get the code is :14.\n"},
    };
    for (auto [described, result, decided_by, printed] : cases) {
        const outcome end = described.clock_speed(10).run({"1"});
        EXPECT_TRUE(end.has(result)) << end.transcript();
        EXPECT_EQ(end.exit_status, 0);
        EXPECT_THAT(end.output(), HasSubstr(printed));
        EXPECT_THAT(end.output(), Not(HasSubstr("poweroff button press one time 2 second")));
        EXPECT_TRUE(in_order(end, {decided_by, result}));
        EXPECT_TRUE(leds_and_sleeps(end).ends_with(five_off));
    }
}

TEST(led_prompts, confirm_blinks_the_five_until_120_s_have_passed) {
    const outcome end = led_unit().without("/dev/input/event1").clock_speed(400).run({"1"});

    std::string expected = static_on + static_on + five_off;
    for (int slice = 0; slice < 399; ++slice) {
        // A count from 0 to 100 decides: every 101 slices the five are lit twice in a row.
        expected += "wait 0.3 s\n" + (slice % 101 % 2 == 0 ? five_on : five_off);
    }
    expected += "wait 0.3 s\n" + five_off;
    EXPECT_EQ(end.transcript({event_kind::led, event_kind::wait}), expected);
    EXPECT_EQ(end.output(), "key fd < 0\nprompt 1: 0\n");
    EXPECT_GE(end.when("prompt 1: 0").value(), 120s);
}

// A device that is gone stays readable: it is read once in each slice.
TEST(led_prompts, confirm_without_a_usable_key_device_ends_after_120_s) {
    const struct {
        const char *what;
        unit described;
        std::vector<std::string> arguments;
        int looks;
    } cases[] = {
        {"failing", led_unit().failing_key_device(), {"1"}, 400},
        {"descriptor too large for select",
         led_unit().limit(RLIMIT_NOFILE, 2048).press(key::ok, after("wait", 1s)),
         {"descriptors=1100", "1"},
         0},
    };
    for (auto [what, described, arguments, looks] : cases) {
        const outcome end = described.clock_speed(400).run(arguments);
        EXPECT_TRUE(end.output().ends_with("prompt 1: 0\n")) << what;
        EXPECT_EQ(end.count("out get a key"), looks) << what;
        EXPECT_EQ(exact_count(end, "wait 0.3 s"), 400) << what;
        EXPECT_EQ(end.count("wait "), 400 + looks) << what;
        EXPECT_GE(end.when("prompt 1: 0").value(), 120s) << what;
    }
}

// A key neither starts a new slice nor uses one up: there are 400 whole slices with and without
// keys.
TEST(led_prompts, ignored_keys_do_not_prolong_the_wait) {
    unit described = led_unit();
    for (int key_number = 0; key_number < 300; ++key_number) {
        described.key_event(4, key_number % 2 == 0, after("wait", 100ms * key_number));
    }
    const outcome end = described.run({"1"});

    EXPECT_TRUE(end.has("prompt 1: 0"));
    EXPECT_EQ(end.count("out get a key"), 300);
    EXPECT_EQ(exact_count(end, "wait 0.3 s"), 400);
    EXPECT_GE(end.when("prompt 1: 0").value(), 120s);
}

TEST(led_prompts, success_pattern_follows_the_part_number) {
    const struct {
        const char *part_number;
        const std::string &pattern;
    } cases[] = {
        {"10135634", charge_and_power}, {"10135934", charge_and_power}, {"10135534", three_on},
        {"10135:34", three_on},         {"10136634", three_on},         {"1013", three_on},
    };
    for (const auto &[part_number, pattern] : cases) {
        const outcome end = led_unit().part_number(part_number).run({"2"});
        const std::string lit = &pattern == &three_on ? static_on + three_on : pattern;
        EXPECT_EQ(leds_and_sleeps(end), static_on + five_off + lit + "sleep 3 s\n" + five_off)
            << part_number;
        EXPECT_EQ(end.output(), "prompt 2: 1\n");
    }
}

TEST(led_prompts, failure_and_refusal_flash_three_times) {
    for (const char *number : {"4", "5"}) {
        const outcome end = led_unit().run({number});
        std::string expected = static_on + five_off;
        for (int flash = 0; flash < 3; ++flash) {
            expected += static_on + three_on + "sleep 1 s\n" + three_off + "sleep 1 s\n";
        }
        EXPECT_EQ(leds_and_sleeps(end), expected + "sleep 3 s\n");
        EXPECT_EQ(end.output(), std::string("prompt ") + number + ": 1\n");
    }
}

TEST(led_prompts, missing_led_is_reported_and_skipped) {
    const outcome end = led_unit().without("/sys/class/leds/Light_Gps").run({"2"});

    std::string others = five_off.substr(five_off.find('\n') + 1);
    EXPECT_EQ(leds_and_sleeps(end), static_on + others + charge_and_power + "sleep 3 s\n" + others);
    EXPECT_EQ(end.output(), "led dev  open failed\nled dev  open failed\nprompt 2: 1\n");
    EXPECT_EQ(end.errors(), "open: No such file or directory\nopen: No such file or directory\n");
}

// The steps that each thread asks for: the order between those of the prompts and those of the
// running indication is arbitrary.
TEST(led_prompts, running_indication_alternates_until_the_result_is_shown) {
    const std::string charge = "led Light_Charge 255\nled Light_Power 0\n";
    const std::string power = "led Light_Charge 0\nled Light_Power 255\n";
    const std::string both_off = "led Light_Charge 0\nled Light_Power 0\n";
    const std::pair<const char *, std::string> cases[] = {
        {"2", charge_and_power}, {"4", static_on + three_on}, {"5", static_on + three_on}};
    for (const auto &[number, result_begins] : cases) {
        const outcome end = led_unit()
                                .write("/tmp/enough", "", after("led Light_Power 255", 600ms))
                                .run({"3", "until=/tmp/enough", number});

        EXPECT_TRUE(end.output().starts_with("################update coming!#####################\n"
                                             "prompt 3: 1\n"))
            << end.output();
        EXPECT_EQ(end.exit_status, 0); // a sanitizer reports nothing either
        std::string seen = end.transcript({event_kind::led});
        for (int prompt = 0; prompt < 2; ++prompt) { // each prepares itself
            seen.erase(seen.find(static_on), static_on.size());
        }
        EXPECT_TRUE(std::regex_search(seen, std::regex("^" + five_off + "(" + charge + power +
                                                       ")+(" + charge + ")?" + both_off + five_off +
                                                       result_begins)))
            << number << "\n"
            << seen;
        const int steps = exact_count(end, "led Light_Charge 255") - (*number == '2' ? 1 : 0) +
                          exact_count(end, "led Light_Power 255") - (*number == '2' ? 1 : 3);
        EXPECT_EQ(exact_count(end, "sleep 0.5 s"), steps) << number;
    }
}

TEST(led_prompts, second_pattern_runs_along_the_panel) {
    // Without the two LEDs that the running indication switches at the same time.
    const outcome end = led_unit()
                            .write("/tmp/blinks", "", after("led Light_Power 255", 0s))
                            .write("/tmp/enough", "", after("led Light_Data_Se 255", 1s, 77))
                            .clock_speed(100)
                            .run({"3", "until=/tmp/blinks", "light", "until=/tmp/enough", "2"});

    std::string seen;
    for (const event &e : end.events) {
        const bool shared = e.text.starts_with("Light_Charge") || e.text.starts_with("Light_Power");
        seen += e.kind == event_kind::led && !shared ? e.line() + "\n" : "";
    }
    const std::string gps = "led Light_Gps ", se = "led Light_Data_Se ", re = "led Light_Data_Re ";
    const std::string none_lit = gps + "0\n" + se + "0\n" + re + "0\n";
    const std::string no_light = static_on + none_lit;
    const std::string one_round = no_light + gps + "255\n" + se + "0\n" + re + "0\n" + gps + "0\n" +
                                  se + "255\n" + re + "0\n" + none_lit;
    std::string expected = no_light + none_lit;
    for (int round = 0; round < 75; ++round) {
        expected += one_round;
    }
    // A count from 0 to 300 decides: every 301 steps there is no light twice in a row.
    EXPECT_TRUE(seen.starts_with(expected + no_light + one_round)) << seen;
    EXPECT_GE(end.count("sleep 0.2 s"), 301);
}

TEST(led_prompts, unit_without_a_prompt_set_is_left_alone) {
    for (const char *model : {"31", ""}) {
        const outcome end = led_unit().model(model).run({"6", "1", "2", "3", "4", "5", "7"});
        EXPECT_EQ(end.transcript(), "out prompt 6: 0\nout prompt 1: 0\nout prompt 2: 0\n"
                                    "out prompt 3: 0\nout prompt 4: 0\nout prompt 5: 0\n"
                                    "out prompt 7: 0\nexit status 0\n")
            << model;
    }
}

TEST(led_prompts, host_record_that_vanishes_stops_no_ending) {
    const outcome end = led_unit()
                            .remove("/update/hw/sys", after("led Light_Power 255", 0s))
                            .write("/tmp/gone", "", after("act remove /update/hw/sys", 0s))
                            .run({"6", "3", "until=/tmp/gone", "2", "5"});

    EXPECT_TRUE(end.output().ends_with("prompt 3: 1\nprompt 2: 0\nprompt 5: 0\n")) << end.output();
    const std::string refusal =
        "open sys err: No such file or directory\nget_local_host_info() failure\n";
    EXPECT_EQ(end.errors(), refusal + refusal);
    EXPECT_EQ(end.exit_status, 0); // while the running indication continues
}

} // namespace
