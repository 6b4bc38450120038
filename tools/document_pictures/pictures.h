#pragma once

#include "simulator/panels/picture.h"

#include <string>
#include <vector>

// The pictures, drawn from what the program actually does. All throw std::runtime_error if the
// program fails to do it.
namespace document_pictures {

// What the OLED shows while the example of the display middleware runs, and the commands that were
// sent to it, one string of hexadecimal bytes per transfer.
struct oled_screen {
    simulator::picture shown;
    std::vector<std::string> commands;
};
oled_screen run_oled_status();

// What the colour LCD shows during an update, in order: the question, the frames of the running
// indication, the result.
std::vector<simulator::picture> run_screen_update();

// All glyphs of the OLED's tables.
simulator::picture draw_glyph_sheet();

// When each LED is lit, for each prompt of a unit with LEDs; SVG.
std::string draw_lights();

// How a picture is rotated on its way to the colour LCD; SVG.
std::string draw_rotation();

} // namespace document_pictures
