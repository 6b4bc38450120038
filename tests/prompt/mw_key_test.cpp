#include "prompt/mw_key.h"

#include "tests/support/files.h"
#include "tests/support/key_events.h"
#include "tests/support/printed.h"

#include <climits>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using namespace renewer;

namespace {

namespace fs = std::filesystem;

constexpr unsigned untouched = 4711;

// What one call of key_get returns and prints.
struct step {
    event_bytes event;
    int code;
    unsigned duration;
    std::string printed;
};

void expect_steps(const std::vector<step> &steps) {
    std::string bytes;
    for (const step &s : steps) {
        bytes += s.event;
    }
    put_file(key_device, bytes);
    const int device = key_open(1);
    ASSERT_GE(device, 0);
    for (size_t i = 0; i < steps.size(); ++i) {
        unsigned duration = untouched;
        EXPECT_EQ(reply_of([&] { return key_get(device, &duration); }),
                  (reply{steps[i].code, steps[i].printed, ""}));
        EXPECT_EQ(duration, steps[i].duration) << i;
        EXPECT_FALSE(key_device_lost()) << i;
    }
    EXPECT_EQ(key_close(device), 0);
}

std::string printed_for(int code, int value, int seconds, int key) {
    return "@" + std::to_string(code) + "  " + std::to_string(value) + " " +
           std::to_string(seconds) + "\nget the code is :" + std::to_string(key) + ".\n";
}

TEST(mw_key, each_key_is_named_and_timed) {
    const struct {
        uint16_t code;
        const char *on_press;
        const char *on_release;
    } keys[] = {
        {2, "ok_down_t->time:100s\n", "ok button is pressed:2s\n"},
        {3, "", "right_button is pressed:2s\n"},
        {4, "", "left button is pressed:2s\n"},
        {5, "", "down button is pressed:2s\n"},
        {6, "", "up button is pressed:2s\n"},
        {7, "", "esc button is pressed:2s\n"},
        {8, "", "power button is pressed:2s\n"},
    };
    std::vector<step> steps;
    for (const auto &[code, on_press, on_release] : keys) {
        steps.push_back(
            {event_of(code, 1, 100, 0), code, 0, printed_for(code, 1, 100, code) + on_press});
        steps.push_back({event_of(0, 0, 100, 0), -1, untouched, ""});
        steps.push_back({event_of(code, 0, 102, 400000), code + 10, 2,
                         printed_for(code, 0, 102, code + 10) + on_release});
        steps.push_back({event_of(0, 0, 102, 400000), -1, untouched, ""});
    }
    expect_steps(steps);
}

TEST(mw_key, codes_of_no_key_are_printed_and_refused) {
    expect_steps(
        {{event_of(1, 1, 7), -1, untouched, printed_for(1, 1, 7, 1)},
         {event_of(1, 0, 7), -1, untouched, printed_for(1, 0, 7, 11)},
         {event_of(9, 0, 7), -1, untouched, printed_for(9, 0, 7, 19)},
         {event_of(19, 1, 7), -1, untouched, printed_for(19, 1, 7, 19)},
         {event_of(UINT16_MAX, 0, 7), -1, untouched, printed_for(UINT16_MAX, 0, 7, 65545)}});
}

TEST(mw_key, indistinguishable_events_are_decoded_alike) {
    expect_steps({
        // A scan code of another event type.
        {event_of(4, 0x70004, 5, 0, 4), 4, 0, "@4  458756 5\nget the code is :4.\n"},
        // The press of a key with event code 13 reads like the release of key 3.
        {event_of(13, 1, 9, 0), 13, 9, printed_for(13, 1, 9, 13) + "right_button is pressed:9s\n"},
        // An auto-repeat is a later press.
        {event_of(3, 1, 50, 0), 3, 0, printed_for(3, 1, 50, 3)},
        {event_of(3, 2, 59, 0), 3, 0, printed_for(3, 2, 59, 3)},
        {event_of(3, 0, 60, 0), 13, 1, printed_for(3, 0, 60, 13) + "right_button is pressed:1s\n"},
    });
}

TEST(mw_key, held_time_counts_from_the_stamp_also_when_it_is_zero) {
    expect_steps({
        {event_of(2, 0, 1700000000, 0), 12, 1700000000,
         printed_for(2, 0, 1700000000, 12) + "ok button is pressed:1700000000s\n"},
        {event_of(2, 1, 0, 0), 2, 0, printed_for(2, 1, 0, 2) + "ok_down_t->time:0s\n"},
        {event_of(2, 0, 2, 600000), 12, 3, printed_for(2, 0, 2, 12) + "ok button is pressed:3s\n"},
        // esc and power share their times: the first release uses them up.
        {event_of(7, 1, 10, 0), 7, 0, printed_for(7, 1, 10, 7)},
        {event_of(8, 1, 20, 0), 8, 0, printed_for(8, 1, 20, 8)},
        {event_of(8, 0, 23, 0), 18, 3, printed_for(8, 0, 23, 18) + "power button is pressed:3s\n"},
        {event_of(7, 0, 25, 0), 17, 25, printed_for(7, 0, 25, 17) + "esc button is pressed:25s\n"},
    });
}

TEST(mw_key, held_time_is_rounded_above_half_a_second) {
    const struct {
        key_stamp press;
        key_stamp release;
        unsigned seconds;
    } cases[] = {
        {{10, 0}, {12, 400000}, 2},
        {{10, 0}, {12, 500999}, 2},
        {{10, 0}, {12, 501000}, 3},
        {{10, 900000}, {11, 200000}, 0},
        {{10, 400000}, {10, 901000}, 1},
        // -999999 us counts as -999 ms.
        {{10, 999999}, {12, 0}, 1},
        {{12, 0}, {10, 0}, 0},
        {{INT_MIN, 0}, {INT_MAX, 0}, UINT_MAX},
        {{INT_MAX, INT_MAX}, {INT_MIN, INT_MIN}, 0},
    };
    for (const auto &[press, release, seconds] : cases) {
        EXPECT_EQ(time_diff_valid(press, release), seconds)
            << press.seconds << "." << press.microseconds << " to " << release.seconds << "."
            << release.microseconds;
    }
}

TEST(mw_key, event_information) {
    put_file(key_device, event_of(9, 0, 70, 123456) + event_of(0, 0, 71, 0));
    const int device = key_open(1);
    key_stamp stamp = {1, 2};
    EXPECT_EQ(get_key_info(device, &stamp), 19);
    EXPECT_EQ(stamp.seconds, 70);
    EXPECT_EQ(stamp.microseconds, 123456);
    stamp = {1, 2};
    for (int i = 0; i < 2; ++i) { // an event without a code, then the end
        EXPECT_EQ(get_key_info(device, &stamp), -1);
        EXPECT_EQ(stamp.seconds, 1);
        EXPECT_EQ(stamp.microseconds, 2);
        EXPECT_EQ(key_device_lost(), i == 1);
    }
    key_close(device);
}

TEST(mw_key, last_event_value) {
    const std::string line(32, 'x');
    EXPECT_EQ(get_gpio_info(0), 0); // before the device was opened
    put_file(key_device, event_of(3, 2, 1, 0) + event_of(0, 1, 1, 0) + event_of(9, 1, 2, 0) +
                             event_of(3, 0, 3, 0));
    const int device = key_open(1);
    EXPECT_EQ(get_gpio_info(0), 0); // before any event
    unsigned duration = 0;
    std::string values;
    for (int i = 0; i < 4; ++i) {
        key_get(device, &duration);
        const reply result = reply_of([] { return get_gpio_info(0); });
        EXPECT_EQ(result.out, line + std::to_string(result.value) + "\n");
        values += std::to_string(result.value);
    }
    EXPECT_EQ(values, "2210"); // an event without a code is not kept, a refused one is
    key_close(device);
    EXPECT_EQ(get_gpio_info(0), 0);
}

TEST(mw_key, device_without_data_is_lost) {
    put_file(key_device, "");
    const int device = key_open(1);
    unsigned duration = untouched;
    EXPECT_EQ(key_get(device, &duration), -1);
    EXPECT_TRUE(key_device_lost());
    // One that comes back is not.
    put_file(key_device, event_of(0, 0, 1, 0));
    EXPECT_EQ(key_get(device, &duration), -1);
    EXPECT_FALSE(key_device_lost());
    EXPECT_EQ(key_get(-1, &duration), -1); // a read error
    EXPECT_TRUE(key_device_lost());
    EXPECT_EQ(duration, untouched);
    key_close(device);
    EXPECT_EQ(key_get(STDIN_FILENO, &duration), -1); // closed: nothing to read into
    EXPECT_TRUE(key_device_lost());
}

TEST(mw_key, opening_and_closing) {
    EXPECT_EQ(reply_of([] { return key_open(1); }), (reply{-1, "", ""}));
    EXPECT_EQ(key_close(-1), -1);
    EXPECT_EQ(keycontrol(1, 2, 3, 4), -1);
    fs::create_directories(key_device.parent_path());
    ASSERT_EQ(mkfifo(key_device.c_str(), 0600), 0);
    const int keys = open(key_device.c_str(), O_RDWR | O_CLOEXEC);
    for (const int block : {0, 1, 5}) {
        const int device = key_open(block);
        const int flags = fcntl(device, F_GETFL);
        EXPECT_EQ(flags & O_ACCMODE, O_RDONLY);
        EXPECT_EQ((flags & O_NONBLOCK) != 0, block == 0);
        EXPECT_EQ(fcntl(device, F_GETFD), FD_CLOEXEC);
        if (block == 0) {
            unsigned duration = 0;
            EXPECT_EQ(key_get(device, &duration), -1); // nothing yet is not a lost device
            EXPECT_FALSE(key_device_lost());
        }
        EXPECT_EQ(key_close(device), 0);
        EXPECT_EQ(key_close(device), -1);
    }
    close(keys);
}

} // namespace
