// The demo as it is started, without a terminal, and what it draws on one.

#include "simulator/demo/screen_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <sys/wait.h>

using namespace simulator;
using testing::HasSubstr;

namespace {

struct ended {
    int status;
    std::string output;
};

ended run_demo(const std::string &options) {
    FILE *pipe = popen((DEMO " " + options + " 2>&1").c_str(), "r");
    if (pipe == nullptr) {
        throw std::runtime_error("cannot start the demo");
    }
    std::string output;
    for (int byte; (byte = fgetc(pipe)) != EOF;) {
        output.push_back(static_cast<char>(byte));
    }
    return {WEXITSTATUS(pclose(pipe)), output};
}

// A directory that is gone after the test.
struct work_directory {
    std::filesystem::path path = testing::TempDir() + "demo-" + std::to_string(getpid());
    ~work_directory() { std::filesystem::remove_all(path); }

    std::ptrdiff_t files() const {
        return std::distance(std::filesystem::directory_iterator(path), {});
    }
};

TEST(demo, tells_a_run_of_each_model_to_its_end) {
    const work_directory pictures;
    const std::string into = " --pictures '" + pictures.path.string() + "'";
    const struct {
        std::string options;
        const char *told;
        const char *end;
        std::ptrdiff_t pictures;
    } cases[] = {
        {"", "panel   \u25cf STATIC  \u25cf GPS", "ended   status 1\n", 0},
        {"--answer decline", "user canceled", "ended   status 0\n", 0},
        {"--model screen --built-in" + into, "screen  picture-02.png\n", "ended   status 1\n", 3},
        {"--model screen --answer other" + into, "key 7 enter", "ended   status 0\n", 2},
        {"--model oled" + into, "screen  picture-60.png\n", "ended   status 0\n", 61},
    };
    for (const auto &[options, told, end, count] : cases) {
        const auto [status, output] = run_demo("--speed 40 " + options);
        EXPECT_EQ(status, 0) << options;
        EXPECT_THAT(output, HasSubstr(told)) << options;
        EXPECT_THAT(output, HasSubstr(end)) << options;
        EXPECT_EQ(count == 0 ? 0 : pictures.files(), count) << options;
        EXPECT_THAT(output, testing::Not(HasSubstr("\033"))) << options;
    }
}

TEST(demo, refuses_what_does_not_go_together) {
    for (const char *options : {"--model oval", "--built-in", "--pictures x", "--answer other",
                                "--model screen --answer power", "--speed 0", "more"}) {
        const auto [status, output] = run_demo(options);
        EXPECT_EQ(status, 2) << options;
        EXPECT_THAT(output, HasSubstr("; --help tells more\n")) << options;
    }
}

TEST(demo, screen_fits_the_terminal) {
    const work_directory pictures;
    picture seen = {294, 126, std::vector<uint8_t>(size_t{294} * 126 * 3, 255)};
    std::fill_n(seen.rgb.begin(), seen.rgb.size() / 2, uint8_t{0});
    screen_view view(pictures.path, seen);
    const struct {
        int columns, rows, width, lines;
    } cases[] = {{120, 50, 118, 25}, {80, 50, 78, 16}, {400, 200, 294, 63}, {120, 17, 56, 12}};
    for (const auto &[columns, rows, width, lines] : cases) {
        const std::string drawing = view.drawn(columns, rows);
        EXPECT_EQ(std::ranges::count(drawing, '\n'), lines + 3);
        EXPECT_EQ(drawing.find('\n'), static_cast<size_t>(width) + 2);
        // Black above, white below, each told once a line and half.
        EXPECT_THAT(drawing, HasSubstr("|\033[38;2;0;0;0m\033[48;2;0;0;0m\u2580\u2580"));
        EXPECT_THAT(drawing, HasSubstr("|\033[38;2;255;255;255m\033[48;2;255;255;255m\u2580"));
    }
}

} // namespace
