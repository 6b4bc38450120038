#include "prompt/prompt_screen_ardea.h"

#include "lcd/sa1230_device.h"

#include "simulator/in_process/asked.h"
#include "simulator/in_process/spi_boundary.h"
#include "tests/support/files.h"
#include "tests/support/key_events.h"
#include "tests/support/pictures.h"
#include "tests/support/printed.h"
#include "tests/support/thread_calls.h"

#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <utility>

using namespace renewer;

namespace {

constexpr const char lcd[] = "/dev/spidev1.0";

// A picture file of one pixel, which identifies it on the panel.
void put_marked(const std::string &name, uint8_t mark) {
    put_file("/reserve/update/" + name,
             bmp_of(1, 1, std::string{'\0', '\0', static_cast<char>(mark * 8)}));
}

// The mark of the picture that was sent last; "-" for a built-in one.
std::string shown() {
    const std::string &pixels = spi().pixels;
    return pixels.size() == 2 ? std::to_string(static_cast<int>(pixels[1])) : "-";
}

// What the user sees of a built-in picture of the LCD.
simulator::picture built_in(unsigned number) {
    const int fd = sa1230_open(lcd);
    sa1230_default(fd, number);
    close(fd);
    return spi().panel.seen();
}

bool is_open(const std::filesystem::path &path) {
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == path) {
            return true;
        }
    }
    return false;
}

struct prompt_screen : testing::Test {
    void SetUp() override {
        put_lcd(lcd);
        put_file(key_device, "");
        ASSERT_EQ(init_screen_ardea(), 1);
        spi().forget();
    }
};

TEST(prompt_screen_init, opens_both_devices_once) {
    put_lcd(lcd);
    put_file(key_device, "");
    EXPECT_EQ(reply_of(init_screen_ardea), (reply{1, "", ""}));
    EXPECT_TRUE(is_open(lcd));
    EXPECT_TRUE(is_open(key_device));
    EXPECT_TRUE(spi().panel.shows());
    spi().forget();
    EXPECT_EQ(init_screen_ardea(), 1);
    EXPECT_EQ(asked().transcript, "");
    EXPECT_EQ(uninit_screen_ardea(), 1);
    EXPECT_FALSE(is_open(key_device));
    EXPECT_TRUE(is_open(lcd));
}

TEST(prompt_screen_init, retries_both_after_the_lcd_did_not_open) {
    std::filesystem::create_directories("/dev/input");
    const std::string no_lcd = "spi_oled__open: /dev/spidev1.0 error!\nopen err\n";
    EXPECT_EQ(reply_of(init_screen_ardea), (reply{-1, "key fd < 0\n" + no_lcd, ""}));
    put_file(key_device, "");
    const size_t descriptors = open_descriptors();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(reply_of(init_screen_ardea), (reply{-1, no_lcd, ""}));
    }
    EXPECT_TRUE(is_open(key_device));
    EXPECT_EQ(open_descriptors(), descriptors + 1) << "the earlier ones are closed";
    put_lcd(lcd);
    EXPECT_EQ(init_screen_ardea(), 1);
}

TEST_F(prompt_screen, first_event_decides) {
    const struct {
        std::string events;
        int answer;
        const char *message;
    } cases[] = {
        {event_of(2, 1), 1, "key 2 enter\n"},
        {event_of(2, 0), 0, "key 12 enter\n"},
        {event_of(7, 1), 0, "key 7 enter\n"},
        {event_of(0, 0, 0, 0, 0) + event_of(2, 1), 0, "key -1 enter\n"},
        {"", 0, "key -1 enter\n"}, // a dead device: readable, and nothing in it
    };
    for (const auto &[events, answer, message] : cases) {
        uninit_screen_ardea();
        put_file(key_device, events);
        init_screen_ardea();
        spi().forget();
        const reply result = reply_of(prompt_confirm_screen_ardea);
        EXPECT_EQ(result.value, answer) << message;
        EXPECT_TRUE(result.out.ends_with(message)) << result.out;
        EXPECT_TRUE(asked().transcript.ends_with("wait 120 s\n")) << "after the picture";
    }
}

TEST_F(prompt_screen, shows_each_result_and_closes_the_lcd) {
    const struct {
        int (*prompt)();
        const char *file;
        unsigned built_in_number;
        const char *sleeps;
    } cases[] = {
        {prompt_success_screen_ardea, "success.bmp", 2, ""},
        {prompt_failure_screen_ardea, "failure.bmp", 3, ""},
        {prompt_notallow_screen_ardea, "notallow.bmp", 3, "sleep 4 s\n"},
    };
    for (const auto &[prompt, file, built_in_number, sleeps] : cases) {
        for (const bool with_file : {true, false}) {
            uninit_screen_ardea();
            init_screen_ardea();
            spi().forget();
            std::filesystem::remove_all("/reserve/update");
            if (with_file) {
                put_marked(file, 9);
            }
            EXPECT_EQ(prompt(), 1);
            EXPECT_EQ(shown(), with_file ? "9" : "-") << file;
            EXPECT_FALSE(is_open(lcd));
            EXPECT_TRUE(spi().panel.shows()) << "the picture stays";
            const std::string &transcript = asked().transcript;
            EXPECT_EQ(transcript.substr(transcript.rfind("pixels")),
                      (with_file ? "pixels 2\n" : "pixels 360\n") + std::string(sleeps));
            const simulator::picture seen = spi().panel.seen();
            EXPECT_TRUE(with_file || seen == built_in(built_in_number)) << file;
        }
    }
}

TEST_F(prompt_screen, draws_nothing_on_a_closed_lcd) {
    put_marked("success.bmp", 1);
    EXPECT_EQ(prompt_success_screen_ardea(), 1);
    const int other = open("/dev/null", O_RDWR); // gets the number of the closed one
    spi().forget();
    EXPECT_EQ(prompt_failure_screen_ardea(), 1);
    EXPECT_EQ(init_screen_ardea(), 1);
    EXPECT_EQ(asked().transcript, "");
    EXPECT_NE(fcntl(other, F_GETFD), -1) << "not closed either";
    close(other);
}

// Records what is on the screen at each sleep of the animation and stops its thread at the last one
// until the test is done.
struct watched_animation {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<std::string> seen;
    size_t wanted;
    bool ending = false;
    pid_t thread = 0;

    explicit watched_animation(size_t frames) : wanted(frames) {
        asked().before = [this](std::string_view line) {
            if (line != "sleep 1 s") {
                return;
            }
            std::unique_lock held(lock);
            seen.push_back(shown());
            thread = gettid();
            changed.notify_all();
            changed.wait(held, [this] { return seen.size() < wanted || ending; });
        };
    }
    ~watched_animation() { asked().before = nullptr; }

    std::string wait() {
        std::unique_lock held(lock);
        changed.wait_for(held, std::chrono::seconds(30), [this] { return seen.size() >= wanted; });
        std::string text;
        for (const std::string &frame : seen) {
            text += frame + " ";
        }
        return text;
    }
    bool thread_ends() {
        std::unique_lock held(lock);
        changed.wait_for(held, std::chrono::seconds(30), [this] { return !seen.empty(); });
        const std::string task = "/proc/self/task/" + std::to_string(thread);
        held.unlock();
        for (int i = 0; i < 3000 && std::filesystem::exists(task); ++i) {
            poll(nullptr, 0, 10);
        }
        return !std::filesystem::exists(task);
    }
    void let_end() {
        const std::lock_guard held(lock);
        ending = true;
        changed.notify_all();
    }
};

// The blue of its pixel is the number of a frame modulo 32.
void put_frames(int count) {
    for (int frame = 0; frame < count; ++frame) {
        put_marked("updating_" + std::to_string(frame) + ".bmp", static_cast<uint8_t>(frame % 32));
    }
}

std::string run_of(int first, int last) {
    std::string text;
    for (int frame = first; frame <= last; ++frame) {
        text += std::to_string(frame % 32) + " ";
    }
    return text;
}

TEST_F(prompt_screen, animation_runs_through_the_frames_that_there_are) {
    const struct {
        int frames;
        size_t watched;
        std::string seen;
    } cases[] = {
        {2, 7, "0 1 1 0 1 1 0 "},
        {127, 130, run_of(0, 126) + "30 0 1 "},
        {129, 260, run_of(0, 128) + run_of(1, 128) + run_of(1, 3)},
    };
    put_marked("success.bmp", 31);
    for (const auto &[frames, watched, seen] : cases) {
        uninit_screen_ardea();
        init_screen_ardea();
        put_frames(frames);
        watched_animation animation(watched);
        EXPECT_EQ(reply_of(prompt_updating_screen_ardea), (reply{1, "updating1110\n", ""}));
        EXPECT_EQ(animation.wait(), seen) << frames;
        EXPECT_EQ(init_screen_ardea(), 1) << "leaves the LCD alone";
        animation.let_end();
        EXPECT_EQ(prompt_success_screen_ardea(), 1);
        EXPECT_EQ(std::exchange(joins, 0), 1);
        EXPECT_EQ(shown(), "31") << "drawn after the animation";
        EXPECT_EQ(spi().panel.faults(), simulator::sa1230_panel::fault_counts{});
    }
}

TEST_F(prompt_screen, animation_ends_by_itself_with_the_built_in_picture) {
    for (const int frames : {0, 128}) {
        uninit_screen_ardea();
        init_screen_ardea();
        std::filesystem::remove_all("/reserve/update");
        put_frames(frames);
        spi().forget();
        watched_animation animation(1000);
        EXPECT_EQ(prompt_updating_screen_ardea(), 1);
        EXPECT_TRUE(animation.thread_ends()) << frames;
        put_marked("failure.bmp", 5);
        EXPECT_EQ(prompt_failure_screen_ardea(), 1);
        EXPECT_EQ(animation.seen.size(), static_cast<size_t>(frames + 1));
        EXPECT_EQ(shown(), "5");
        EXPECT_FALSE(is_open(lcd));

        const simulator::picture seen = spi().panel.seen();
        simulator::picture expected = built_in(0);
        const size_t corner = 293 * 3; // where the picture of one pixel came
        std::copy_n(&seen.rgb[corner], 3, &expected.rgb[corner]);
        EXPECT_TRUE(seen == expected) << "the built-in picture before";
    }
}

TEST_F(prompt_screen, thread_that_could_not_start_is_not_joined) {
    threads_can_start = false;
    EXPECT_EQ(reply_of(prompt_updating_screen_ardea),
              (reply{1, "updating11111\n", // EAGAIN is 11
                     "====create led_thread_fun error\n: Resource temporarily unavailable\n"}));
    EXPECT_EQ(prompt_success_screen_ardea(), 1);
    EXPECT_EQ(joins, 0);
}

} // namespace
