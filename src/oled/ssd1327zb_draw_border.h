#pragma once

#include "oled/ssd1327zb_canvas.h"

namespace renewer {

// Draws the border of a box inwards: `thickness` pixels (0 is taken as 1) of the grey level
// floor(percentage * 15 / 100); a percentage above 100 is taken as 100. The inside stays as it was.
//
// Returns 0. Returns -1 with nothing drawn: without a box, silently; after
// "(<x>,<y>,<width>,<height>) is a invalid box " for one that is empty or does not lie on the
// panel; after "thickness <n> on box(<x>,<y>,<width>,<height>) is not invalid" for a border of more
// than half the box's width or height; silently without the pixels of a canvas, which are taken for
// 128 x 128 whatever its size says.
int ssd1327zb_draw_border_on_canvas(canvas *frame, const box *area, uint8_t thickness,
                                    uint8_t percentage);

} // namespace renewer
