#pragma once

#include "simulator/terminal/panel_view.h"

#include <filesystem>
#include <vector>

namespace simulator {

// The screen of a unit, in true colour and half blocks, made smaller to fit the terminal; in shades
// of characters where there are no colours. Where nothing can be drawn, a line tells of each
// picture that it has not shown before.
class screen_view : public panel_view {
public:
    // Those pictures are also written as PNG files into this directory, from which those of an
    // earlier run are removed; nowhere when it is empty. Until the first one the user sees `dark`.
    screen_view(const std::filesystem::path &picture_directory, const picture &dark);

    bool take(const event &happened) override;
    bool take(const picture &seen) override;
    std::string told(const event &happened) override;
    std::string drawn(const drawing_room &room) const override;

private:
    std::filesystem::path directory;
    std::vector<picture> known;
    picture now_seen;
    std::string untold; // the name of a picture that no line has told of yet
    held_key key;
};

} // namespace simulator
