#include "prompt/led.h"

#include "tests/support/files.h"
#include "tests/support/printed.h"

using namespace renewer;

namespace {

namespace fs = std::filesystem;

fs::path brightness(const std::string &name) {
    return "/sys/class/leds/" + name + "/brightness";
}

reply on(const std::string &name) {
    return reply_of([&] { return led_on_by_name(name.c_str()); });
}

reply off(const std::string &name) {
    return reply_of([&] { return led_off_by_name(name.c_str()); });
}

TEST(led, writes_the_value_alone) {
    const struct {
        reply (*operation)(const std::string &);
        const char *before;
        const char *after; // sysfs takes what is written alone; a plain file keeps the rest
    } cases[] = {{on, "", "255"}, {on, "#####", "255##"}, {off, "", "0"}, {off, "####", "0###"}};
    for (const auto &[operation, before, after] : cases) {
        put_file(brightness("Light_Static_Data"), before);
        EXPECT_EQ(operation("Light_Static_Data"), (reply{0, "", ""}));
        EXPECT_EQ(get_file(brightness("Light_Static_Data")), after);
    }
}

TEST(led, failures_are_reported_and_create_nothing) {
    fs::create_directories(brightness("Light_Full").parent_path());
    fs::create_symlink("/dev/full", brightness("Light_Full"));
    fs::create_directories(brightness("Light_Directory"));
    fs::create_directories(brightness("Light_Empty").parent_path());
    const std::pair<const char *, std::string> unopened[] = {
        {"Light_Absent", "open: No such file or directory\n"},
        {"Light_Empty", "open: No such file or directory\n"},
        {"Light_Directory", "open: Is a directory\n"}};
    for (const auto &[name, err] : unopened) {
        EXPECT_EQ(on(name), (reply{-1, "led dev open failed\n", err})) << name;
        EXPECT_EQ(off(name), (reply{-1, "led dev  open failed\n", err})) << name;
    }
    EXPECT_EQ(on("Light_Full"), (reply{-1, "led write 255 fialed! \n", ""}));
    EXPECT_EQ(off("Light_Full"), (reply{-1, "led write 0 fialed! \n", ""}));
    EXPECT_FALSE(fs::exists("/sys/class/leds/Light_Absent"));
    EXPECT_FALSE(fs::exists(brightness("Light_Empty")));
}

TEST(led, name_of_any_length_is_used_whole_or_refused) {
    const reply too_long = {-1, "led dev open failed\n", "open: File name too long\n"};
    for (const size_t length : {17u, 30u, 31u, 32u, 33u, 34u, 35u, 36u, 200u}) {
        const std::string name(length, 'L');
        put_file(brightness(name), "");
        const reply done = on(name);
        EXPECT_EQ(done, length < 32 || done.value == 0 ? (reply{0, "", ""}) : too_long) << length;
        EXPECT_EQ(get_file(brightness(name)), done.value == 0 ? "255" : "") << length;
    }
    EXPECT_EQ(off(std::string(5000, 'L')).err, too_long.err);
}

} // namespace
