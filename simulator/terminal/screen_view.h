#pragma once

#include "simulator/terminal/panel_view.h"

#include <filesystem>
#include <vector>

namespace simulator {

// The screen of a unit, drawn with half blocks in true colour and reduced to fit the terminal;
// without colours, in characters of different density. Where nothing can be drawn, each picture
// that is new gets a line.
class screen_view : public panel_view {
public:
    // New pictures are also written as PNG files to this directory, from which those of an earlier
    // run are removed, unless the path is empty. `dark` is what the user sees before the first
    // picture.
    screen_view(const std::filesystem::path &picture_directory, const picture &dark);

    bool take(const event &happened) override;
    bool take(const picture &seen) override;
    std::string line_for(const event &happened) override;
    std::string draw(const drawing_room &room) const override;

private:
    std::filesystem::path directory;
    std::vector<picture> known;
    picture now_seen;
    std::string untold; // the name of a picture that has had no line yet
    held_key key;
};

} // namespace simulator
