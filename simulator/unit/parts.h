#pragma once

#include <filesystem>

namespace simulator {

// The path of a program or file that a simulated unit consists of, from its path in a build:
// part("src/update/renewer"). An installed desk has the same tree in libexec/renewer-desk.
std::filesystem::path part(const std::filesystem::path &place_in_build);

// The path in the build of a part, the reverse of `part`.
std::filesystem::path place_in_build(const std::filesystem::path &part);

constexpr const char updater_place[] = "src/update/renewer";
constexpr const char oled_status_place[] = "tools/oled_status/renewer-oled-status";
constexpr const char oled_battery_place[] = "tools/oled_status/battery.bmp";

} // namespace simulator
