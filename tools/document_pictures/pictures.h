#pragma once

#include "simulator/panels/picture.h"

#include <string>
#include <vector>

// The pictures, each drawn from what the program does. All throw std::runtime_error when the
// program does not get that far.
namespace document_pictures {

// What the OLED shows while the example of the display middleware runs, and the commands that came
// over its wire, each transfer as its bytes in hexadecimal.
struct oled_screen {
    simulator::picture shown;
    std::vector<std::string> commands;
};
oled_screen run_oled_status();

// What the colour LCD shows in an update, one after the other: the question, the frames of the
// running indication, the result.
std::vector<simulator::picture> run_screen_update();

// All glyphs of all tables of the OLED.
simulator::picture draw_glyph_sheet();

// Which LED is lit when, for each prompt of a unit with LEDs; SVG.
std::string draw_lights();

// What becomes of a picture on its way to the colour LCD; SVG.
std::string draw_rotation();

} // namespace document_pictures
