#include "prompt/led.h"

#include "tests/support/files.h"
#include "tests/support/output.h"

#include <gtest/gtest.h>

#include <string>

using namespace renewer;

namespace {

namespace fs = std::filesystem;

fs::path brightness(const std::string &name) {
    return "/sys/class/leds/" + name + "/brightness";
}

struct result {
    int value;
    std::string out;
    std::string err;
};

result switched(int (*operation)(const char *), const std::string &name) {
    testing::internal::CaptureStderr();
    output_listener output;
    const int value = operation(name.c_str());
    return {value, output.text, testing::internal::GetCapturedStderr()};
}

TEST(led, writes_the_value_alone) {
    const struct {
        int (*operation)(const char *);
        const char *before;
        const char
            *after; // an attribute of sysfs takes what is written; a plain file keeps the rest
    } cases[] = {{led_on_by_name, "", "255"},
                 {led_on_by_name, "0\n", "255"},
                 {led_on_by_name, "#####", "255##"},
                 {led_off_by_name, "", "0"},
                 {led_off_by_name, "####", "0###"}};
    for (const auto &[operation, before, after] : cases) {
        put_file(brightness("Light_Static_Data"), before);
        const result done = switched(operation, "Light_Static_Data");
        EXPECT_EQ(done.value, 0);
        EXPECT_EQ(done.out + done.err, "");
        EXPECT_EQ(get_file(brightness("Light_Static_Data")), after);
    }
}

TEST(led, failures_are_reported_and_create_nothing) {
    fs::create_directories(brightness("Light_Full").parent_path());
    fs::create_symlink("/dev/full", brightness("Light_Full"));
    fs::create_directories(brightness("Light_Directory"));
    fs::create_directories(brightness("Light_Empty").parent_path());
    const std::string no_file = "open: No such file or directory\n";
    const struct {
        std::string name;
        std::string err;
        std::string out_on;
        std::string out_off;
    } cases[] = {
        {"Light_Absent", no_file, "led dev open failed\n", "led dev  open failed\n"},
        {"Light_Empty", no_file, "led dev open failed\n", "led dev  open failed\n"},
        {"Light_Directory", "open: Is a directory\n", "led dev open failed\n",
         "led dev  open failed\n"},
        {"Light_Full", "", "led write 255 fialed! \n", "led write 0 fialed! \n"},
    };
    for (const auto &[name, err, out_on, out_off] : cases) {
        const result on = switched(led_on_by_name, name);
        EXPECT_EQ(on.value, -1) << name;
        EXPECT_EQ(on.out, out_on);
        EXPECT_EQ(on.err, err);
        const result off = switched(led_off_by_name, name);
        EXPECT_EQ(off.value, -1) << name;
        EXPECT_EQ(off.out, out_off);
        EXPECT_EQ(off.err, err);
    }
    EXPECT_FALSE(fs::exists("/sys/class/leds/Light_Absent"));
    EXPECT_FALSE(fs::exists(brightness("Light_Empty")));
}

TEST(led, name_of_any_length_is_taken_whole_or_refused) {
    for (size_t length = 17; length <= 200; ++length) {
        const std::string name(length, 'L');
        put_file(brightness(name), "");
        const result on = switched(led_on_by_name, name);
        if (on.value == 0) {
            EXPECT_EQ(get_file(brightness(name)), "255") << length;
            EXPECT_EQ(on.out + on.err, "");
        } else {
            EXPECT_GT(length, 17u);
            EXPECT_EQ(get_file(brightness(name)), "");
            EXPECT_EQ(on.out, "led dev open failed\n");
            EXPECT_EQ(on.err, "open: File name too long\n");
        }
    }
    EXPECT_EQ(switched(led_off_by_name, std::string(5000, 'L')).err, "open: File name too long\n");
}

} // namespace
