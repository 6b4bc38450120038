// The file tree of a unit before a run.

#include "simulator/unit/description.h"
#include "simulator/unit/parts.h"
#include "simulator/unit/unit.h"

#include <fstream>
#include <stdexcept>
#include <sys/stat.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

constexpr const char *directories[] = {"/update/hw",
                                       "/firmware/update",
                                       "/data/app/log",
                                       "/data/sbin",
                                       "/reserve/update",
                                       "/media/sda1",
                                       "/mnt",
                                       "/tmp",
                                       "/dev/input",
                                       "/etc/init.d",
                                       "/sys/class/leds",
                                       "/proc",
                                       "/var/log"};

constexpr const char *leds[] = {"Light_Static_Data", "Light_Gps",    "Light_Data_Se",
                                "Light_Data_Re",     "Light_Charge", "Light_Power",
                                "Oled_Power",        "Oled_Rst"};

void write_file(const fs::path &path, std::string_view content, unsigned mode) {
    fs::create_directories(path.parent_path());
    fs::remove(path);
    std::ofstream(path, std::ios::binary) << content;
    fs::permissions(path, static_cast<fs::perms>(mode));
}

constexpr const char key_device_path[] = "/dev/input/event1";

// Seven unused bytes, then the part number.
std::string host_record(std::string_view part_number) {
    return "unit 1 " + std::string(part_number) + '\0';
}

constexpr const char usual_install_script[] = "#!/bin/sh\n"
                                              "echo installing\n"
                                              "echo installed\n";

} // namespace

fs::path below(const fs::path &root, std::string_view path) {
    return root / fs::path(path).relative_path();
}

void make_usual_tree(const fs::path &root) {
    const auto put = [&](std::string_view path, std::string_view content, unsigned mode = 0644) {
        write_file(below(root, path), content, mode);
    };
    for (const char *directory : directories) {
        fs::create_directories(below(root, directory));
    }
    for (const char *led : leds) {
        put(std::string("/sys/class/leds/") + led + "/brightness", "0\n");
    }
    put("/update/hw/sys", host_record("1013563400120000"));
    for (const supply_file &supply :
         {battery_at(8.2), external_at(12.0), type_c_at(0), usb_mode_of("device")}) {
        put(supply.path, supply.content);
    }
    for (const char *input : {"7Pin_Detect", "Batter_A_Detect", "Batter_B_Detect"}) {
        put(std::string("/sys/class/misc/gpio-misc/") + input + "/value", "1\n");
    }
    put("/firmware/update/install.sh", usual_install_script, 0755);
    put("/firmware/update/renewer.bin", "the updater of this update\n", 0755);
    put("/data/sbin/renewer", "the installed updater\n", 0755);
    put(lcd_node, "");
    put(oled_node, "");
    mkfifo(below(root, key_device_path).c_str(), 0600);
}

unit &unit::model(std::string_view two_characters) {
    return part_number("10" + std::string(two_characters) + "563400120000");
}

unit &unit::part_number(std::string_view pn) {
    return file("/update/hw/sys", host_record(pn));
}

unit &unit::file(std::string_view path, std::string_view content, unsigned mode) {
    plan->tree_changes.push_back(
        [path = std::string(path), content = std::string(content), mode](const fs::path &root) {
            write_file(below(root, path), content, mode);
        });
    return *this;
}

unit &unit::directory(std::string_view path) {
    plan->tree_changes.push_back([path = std::string(path)](const fs::path &root) {
        fs::create_directories(below(root, path));
    });
    return *this;
}

unit &unit::link(std::string_view path, std::string_view target) {
    plan->tree_changes.push_back(
        [path = std::string(path), target = std::string(target)](const fs::path &root) {
            fs::create_directories(below(root, path).parent_path());
            fs::create_symlink(target, below(root, path));
        });
    return *this;
}

unit &unit::without(std::string_view path) {
    plan->tree_changes.push_back(
        [path = std::string(path)](const fs::path &root) { fs::remove_all(below(root, path)); });
    return *this;
}

unit &unit::install_script(std::string_view text) {
    return file("/firmware/update/install.sh", text, 0755);
}

unit &unit::supply(const supply_file &measured) {
    return file(measured.path, measured.content);
}

unit &unit::adc(int channel, std::string_view text) {
    return supply(adc_count(channel, text));
}

unit &unit::battery_volts(double volts) {
    return supply(battery_at(volts));
}

unit &unit::external_volts(double volts) {
    return supply(external_at(volts));
}

unit &unit::without_external_power() {
    return external_volts(0).type_c_volts(0);
}

unit &unit::type_c_volts(double volts) {
    return supply(type_c_at(volts));
}

unit &unit::usb_mode(std::string_view text) {
    return supply(usb_mode_of(text));
}

unit &unit::started_on(const outcome &left) {
    plan->tree_changes.push_back([tree = left.tree](const fs::path &root) {
        for (const char *storage : {"data", "firmware", "media", "mnt", "reserve", "update"}) {
            fs::remove_all(root / storage);
            fs::copy(*tree / storage, root / storage,
                     fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        }
    });
    return *this;
}

unit &unit::before_start(std::function<void(const fs::path &)> look) {
    plan->tree_changes.push_back(std::move(look));
    return *this;
}

unit &unit::with_prompt_pictures() {
    plan->tree_changes.push_back([](const fs::path &root) {
        fs::copy(part("simulator/unit/pictures"), below(root, "/reserve/update"),
                 fs::copy_options::overwrite_existing | fs::copy_options::recursive);
    });
    return *this;
}

unit &unit::failing_key_device() {
    return without(key_device_path)
        .directory(key_device_path); // read(2) of a directory fails with EISDIR
}

} // namespace simulator
