// Unit files: the messages on errors in them.

#include "simulator/desk/unit_file.h"
#include "simulator/unit/temporary_directory.h"

#include <gtest/gtest.h>

#include <fstream>
#include <stdexcept>

using namespace simulator;

namespace {

unit_description read(const std::string &text) {
    const temporary_directory desk;
    const std::string path = desk.path / "unit.yaml";
    std::ofstream(path) << text;
    try {
        return read_unit_file(path);
    } catch (const std::runtime_error &error) {
        throw std::runtime_error(std::string(error.what()).substr(path.size()));
    }
}

TEST(unit_file, names_line_and_field_of_what_is_wrong) {
    const struct {
        const char *text;
        const char *error;
    } cases[] = {
        {"model: led\nbatery: 6\n",
         ":2: batery: there is no such field; there are model, pn, battery, external, type_c, "
         "usb_mode, files, versions, pictures, keys, application, faults"},
        {"{\"model\": \"led\",\n \"battery\": \"full\"}", ":2: battery: expected a number"},
        {"battery: .nan", ":1: battery: expected a number"},
        {"battery: {raw: 1e9}", ":1: battery.raw: expected a number from 0 to 65535"},
        {"\n\nmodel: tube\n",
         ":3: model: \"tube\" is not a model; expected led, screen, or characters 2 and 3 of "
         "the part number"},
        {"pn: 10", ":1: pn: a part number has 4 to 69 characters"},
        {"keys:\n  - ok@2s\n  - start@1s\n",
         ":3: keys: there is no key \"start\"; keys are ok, right, left, down, up, esc, power"},
        {"keys: [ok@]", ":1: keys: a moment is missing; expected 2s, start+2s or \"runs sync\""},
        {"files: {/a/../../etc/passwd: x}",
         ":1: files./a/../../etc/passwd: expected an absolute path on the unit"},
        {"files: {/a: {from: nowhere}}", ":1: files./a.from: there is no file "},
        {"files: {/a: {text: x, mode: 0999}}",
         ":1: files./a.mode: expected an octal number, like 0755"},
        {"application: {acknowledges: soon}",
         ":1: application.acknowledges: \"soon\" is not a time; expected 2s, 300ms or 2min, up "
         "to a day"},
        {"faults: [power_cut]", ":1: faults: expected fields with their values"},
        {"model: [led", ":1: end of sequence flow not found"},
    };
    for (const auto &[text, expected] : cases) {
        try {
            read(text);
            ADD_FAILURE() << text;
        } catch (const std::runtime_error &error) {
            EXPECT_EQ(std::string(error.what()).substr(0, strlen(expected)), expected) << text;
        }
    }
}

TEST(unit_file, describes_a_unit) {
    const unit_description unit = read("model: screen # with its moments\n"
                                       "battery: {raw: 690}\n"
                                       "external: 0\n"
                                       "files: {/a: text, /b: null, /c: {link: /a}}\n"
                                       "versions: {package: v1}\n"
                                       "keys: [ok@2s, power@start+1.5s for 3s]\n"
                                       "application: {acknowledges: never}\n"
                                       "faults: {power_cut: runs cp -drf+20ms, disk_full: "
                                       "{at: prints wait, below: /data}, start_again: true}\n");
    EXPECT_EQ(unit.pn, "1016563400120000");
    EXPECT_TRUE(unit.battery.raw && unit.battery.value == 690 && unit.external.value == 0);
    ASSERT_EQ(unit.files.size(), 4u);
    EXPECT_EQ(unit.files[1].is, unit_file::kind::missing);
    EXPECT_EQ(unit.files[3].content, "v1\n");
    ASSERT_EQ(unit.keys.size(), 2u);
    EXPECT_EQ(unit.keys[1].when.line, "");
    EXPECT_EQ(unit.keys[1].when.delay, 1500ms);
    EXPECT_EQ(unit.keys[1].hold, 3s);
    EXPECT_FALSE(unit.acknowledged_after);
    EXPECT_EQ(unit.power_cut->line, "shell cp -drf");
    EXPECT_EQ(unit.power_cut->delay, 20ms);
    EXPECT_EQ(unit.disk_full->line, "out wait");
    EXPECT_EQ(unit.full_below, "/data");
    EXPECT_TRUE(unit.start_again);
}

} // namespace
