#pragma once

#include <filesystem>

namespace simulator {

// The programs and files that a unit on the desk is made of, each named by where it lies in a
// build: part("src/update/renewer"). An installed desk keeps them in the same order in
// libexec/renewer-desk.
std::filesystem::path part(const std::filesystem::path &place_in_build);

// Where a part lies in the build, the opposite of `part`.
std::filesystem::path place_in_build(const std::filesystem::path &part);

constexpr const char updater_place[] = "src/update/renewer";
constexpr const char oled_status_place[] = "tools/oled_status/renewer-oled-status";
constexpr const char oled_battery_place[] = "tools/oled_status/battery.bmp";

} // namespace simulator
