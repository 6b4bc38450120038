#pragma once

#include "simulator/demo/front_panel.h"

#include <filesystem>

namespace simulator {

// The screen of a unit, in true colour and half blocks, made smaller to fit the terminal. Writes
// each picture that it has not seen before as a PNG file; where nothing can be drawn, a line tells
// of it.
class screen_view : public panel_view {
public:
    // The pictures come into this directory, from which those of an earlier run are removed. Until
    // the first one the user sees `dark`.
    screen_view(const std::filesystem::path &picture_directory, const picture &dark);

    bool take(const event &happened) override;
    bool take(const picture &seen) override;
    std::string told(unit_time now) override;
    std::string drawn(int columns, int rows) const override;

private:
    std::filesystem::path directory;
    std::vector<picture> known;
    picture now_seen;
    unit_time changed{}; // when the last picture came
    std::string untold;  // the file of a picture that no line has told of yet
    held_key key;
};

} // namespace simulator
