#include "prompt/prompt_led_corvus.h"

#include "prompt/led_pattern.h"
#include "tests/support/files.h"
#include "tests/support/key_events.h"
#include "tests/support/printed.h"
#include "tests/support/thread_calls.h"

#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>

using namespace renewer;

namespace {

namespace fs = std::filesystem;

const fs::path host_file = "/update/hw/sys";

void make_leds() {
    for (const char *led : {"Light_Static_Data", "Light_Gps", "Light_Data_Se", "Light_Data_Re",
                            "Light_Charge", "Light_Power"}) {
        put_file(fs::path("/sys/class/leds") / led / "brightness", "");
    }
}

void make_host(const std::string &pn) {
    put_file(host_file, "unit 1 " + pn);
}

std::set<std::string> names_in(const char *directory) {
    std::set<std::string> names;
    for (const auto &entry : fs::directory_iterator(directory)) {
        names.insert(entry.path().filename());
    }
    return names;
}

std::set<std::string> threads() {
    return names_in("/proc/self/task");
}

// Waits for that number of threads: one that was joined may be listed for a moment longer.
bool threads_become(size_t count) {
    for (int i = 0; i < 500 && threads().size() != count; ++i) {
        usleep(10'000);
    }
    return threads().size() == count;
}

// A sanitizer starts a thread of its own with the first of the process.
std::set<std::string> threads_at_rest() {
    std::thread([] {}).join();
    usleep(50'000);
    return threads();
}

const std::string no_host_file =
    "open sys err: No such file or directory\nget_local_host_info() failure\n";
const std::string coming = "################update coming!#####################\n";

TEST(prompt_led_corvus, init_after_uninit_opens_the_keys_again) {
    make_leds();
    EXPECT_EQ(reply_of(uninit_screen_corvus).value, 1);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(reply_of(init_screen_corvus).out, "key fd < 0\n");
        EXPECT_EQ(reply_of(init_screen_corvus).out, "");
        EXPECT_EQ(reply_of(uninit_screen_corvus).value, 1);
    }
    put_file(key_device, "");
    const size_t open_before = names_in("/proc/self/fd").size();
    for (int i = 0; i < 3; ++i) {
        const reply opened = reply_of(init_screen_corvus);
        EXPECT_EQ(opened.value, 1);
        EXPECT_EQ(opened.out, "");
        EXPECT_EQ(names_in("/proc/self/fd").size(), open_before + 1);
    }
    for (int i = 0; i < 2; ++i) { // the second finds nothing to close
        EXPECT_EQ(uninit_screen_corvus(), 1);
        EXPECT_EQ(names_in("/proc/self/fd").size(), open_before);
    }
}

TEST(prompt_led_corvus, without_a_host_record) {
    make_leds();
    const std::set<std::string> before = threads_at_rest();
    joins = 0;
    for (const auto prompt : {prompt_confirm_screen_corvus, prompt_updating_screen_corvus,
                              prompt_success_screen_corvus}) {
        EXPECT_EQ(reply_of(prompt), (reply{0, "", no_host_file}));
    }
    EXPECT_TRUE(threads_become(before.size()));
    EXPECT_EQ(joins, 0);
    EXPECT_EQ(get_file("/sys/class/leds/Light_Gps/brightness"), "");
}

TEST(prompt_led_corvus, success_joins_the_thread_before_it_reads_the_host_record) {
    make_leds();
    make_host("1013563400120000");
    const std::set<std::string> before = threads_at_rest();
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(reply_of(prompt_updating_screen_corvus).out, coming);
        EXPECT_TRUE(threads_become(before.size() + 1));
        // A second start ends the first thread: there is never more than one.
        EXPECT_EQ(reply_of(prompt_updating_screen_corvus).value, 1);
        EXPECT_TRUE(threads_become(before.size() + 1));
        fs::remove(host_file);
        EXPECT_EQ(reply_of(prompt_success_screen_corvus).value, 0);
        EXPECT_TRUE(threads_become(before.size()));
        make_host("1013563400120000");
    }
}

TEST(prompt_led_corvus, thread_that_cannot_be_started_is_not_joined) {
    make_leds();
    make_host("1013563400120000");
    const std::set<std::string> before = threads_at_rest();
    threads_can_start = false;
    EXPECT_EQ(reply_of(prompt_updating_screen_corvus),
              (reply{1, coming,
                     "====create led_thread_fun error\n: Resource temporarily unavailable\n"}));
    EXPECT_TRUE(threads_become(before.size()));
    fs::remove(host_file);
    joins = 0;
    EXPECT_EQ(reply_of(prompt_success_screen_corvus).value, 0);
    EXPECT_EQ(joins, 0);
}

// The names in its table and in `five_off` are compared by address across two source files.
TEST(prompt_led_corvus, light_that_runs_along_the_panel) {
    make_leds();
    make_host("1013563400120000");
    show_leds(five_off);
    reply_of(prompt_updating_screen_corvus); // so that the bodies of threads run
    std::thread running([] { led_thread_fun_corvus(nullptr); });
    bool lit = false;
    for (int i = 0; i < 500 && !lit; ++i) {
        usleep(10'000);
        lit = get_file("/sys/class/leds/Light_Gps/brightness") == "255";
    }
    EXPECT_TRUE(lit);
    fs::remove(host_file);
    reply_of(prompt_success_screen_corvus);
    running.join();
}

// The signals that a thread of this process blocks, by proc(5).
uint64_t blocked_signals(const std::string &thread) {
    std::istringstream status(get_file("/proc/self/task/" + thread + "/status"));
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("SigBlk:")) {
            return std::stoull(line.substr(7), nullptr, 16);
        }
    }
    return 0;
}

TEST(prompt_led_corvus, blink_thread_takes_no_signals) {
    make_leds();
    make_host("1013563400120000");
    const std::set<std::string> before = threads_at_rest();
    const uint64_t own = blocked_signals(std::to_string(getpid()));
    reply_of(prompt_updating_screen_corvus);
    // The C library itself blocks all signals while it sets a thread up.
    for (int i = 0; i < 500 && get_file("/sys/class/leds/Light_Power/brightness").empty(); ++i) {
        usleep(10'000);
    }
    int found = 0;
    for (const std::string &thread : threads()) {
        if (!before.contains(thread)) {
            ++found;
            for (const int signal : {SIGALRM, SIGCHLD, SIGTERM, SIGPIPE, SIGUSR1, SIGRTMAX}) {
                EXPECT_NE(blocked_signals(thread) >> (signal - 1) & 1, 0u) << signal;
            }
        }
    }
    EXPECT_EQ(found, 1);
    EXPECT_EQ(blocked_signals(std::to_string(getpid())), own);
    fs::remove(host_file);
    reply_of(prompt_success_screen_corvus);
}

TEST(prompt_led_corvus, stateless_key_codes) {
    const std::pair<std::string, int> cases[] = {{event_of(2, 1), 2},
                                                 {event_of(2, 0), 12},
                                                 {event_of(352, -1), 352},
                                                 {event_of(65535, 0), 65545},
                                                 {event_of(0, 1), 0},
                                                 {event_of(5, 1).substr(0, 9), 0},
                                                 {"", -1}};
    for (const auto &[bytes, code] : cases) {
        put_file("/tmp/events", bytes);
        const int device = open("/tmp/events", O_RDONLY);
        EXPECT_EQ(reply_of([&] { return get_key_code(device); }), (reply{code, "", ""}));
        close(device);
    }
    EXPECT_EQ(get_key_code(-1), -1);
}

} // namespace
