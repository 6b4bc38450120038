#pragma once

#include "canvas.h"

#include <filesystem>
#include <string>
#include <vector>

// Pictures from a text with one element a line. Places and sizes are in pixels from the top left
// corner and may have a fraction; a colour is "black", "white" or "#rrggbb"; a line that starts
// with "# " and an empty one are skipped.
//
//   font FILE                                    the font of the texts that follow
//   picture NAME WIDTH HEIGHT COLOUR [FRAMES]    starts a picture filled with the colour; with a
//                                                number of frames, "%d" in the name becomes 0, 1 ..
//   text ANCHOR X Y SIZE COLOUR WORDS            one line; the point is in the "centre" of the ink
//                                                or at its "top", "left", "bottom-right" and so on
//   line X Y X Y THICKNESS COLOUR                with round ends; a disc when both ends are one
//   box X Y WIDTH HEIGHT RADIUS COLOUR           filled, with round corners
//   spinner X Y RADIUS DOT COLOUR                a ring of dots, one for each frame
namespace pictures {

struct named_picture {
    std::string name;
    canvas content;
};

// Draws what the file at `description` says, with the fonts of the directory `fonts`.
//
// Throws std::runtime_error, with the number of the line that cannot be followed.
std::vector<named_picture> draw(const std::filesystem::path &description,
                                const std::filesystem::path &fonts);

} // namespace pictures
