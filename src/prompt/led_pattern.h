#pragma once

#include <array>
#include <span>

// The front panel's six LEDs and the patterns that are made of them.
namespace renewer {

// One definition of each for the whole program: a name is known by its address.
inline constexpr const char light_static_data[] = "Light_Static_Data";
inline constexpr const char light_gps[] = "Light_Gps";
inline constexpr const char light_data_se[] = "Light_Data_Se";
inline constexpr const char light_data_re[] = "Light_Data_Re";
inline constexpr const char light_charge[] = "Light_Charge";
inline constexpr const char light_power[] = "Light_Power";

struct led_state {
    const char *name;
    bool lit;
};

// Switches LEDs in the order of the pattern. One that cannot be switched is reported (see led.h)
// and skipped.
void show_leds(std::span<const led_state> pattern);

// The five status LEDs: all but Light_Static_Data.
inline constexpr std::array<led_state, 5> five_on = {{
    {light_gps, true},
    {light_data_se, true},
    {light_data_re, true},
    {light_charge, true},
    {light_power, true},
}};
inline constexpr std::array<led_state, 5> five_off = {{
    {light_gps, false},
    {light_data_se, false},
    {light_data_re, false},
    {light_charge, false},
    {light_power, false},
}};

} // namespace renewer
