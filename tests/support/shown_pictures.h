#pragma once

#include "command.h"
#include "simulator/unit/unit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <regex>
#include <utility>

// Which pictures a unit's user saw. PROMPT_PICTURES and BUILT_IN_PICTURES are the directories of
// the BMP files in the build tree.

// A BMP file as netpbm, another program, reads it, reduced to 16 bits a pixel: the panel replaces
// the low bits of each colour by its high ones.
inline simulator::picture read_bmp(const std::string &path) {
    const std::string file = netpbm("bmptopnm -quiet '" + path + "'");
    simulator::picture read;
    int begin = 0;
    EXPECT_EQ(sscanf(file.c_str(), "P6 %d %d 255%n", &read.width, &read.height, &begin), 2) << path;
    read.rgb.assign(file.begin() + begin + 1, file.end());
    for (size_t i = 0; i < read.rgb.size(); ++i) {
        const int part = read.rgb[i];
        read.rgb[i] =
            static_cast<uint8_t>(i % 3 == 1 ? part / 4 * 4 + part / 64 : part / 8 * 8 + part / 32);
    }
    return read;
}

inline simulator::picture placed_on_black(const simulator::picture &small, int x, int y) {
    simulator::picture screen = {294, 126, std::vector<uint8_t>(size_t{294} * 126 * 3)};
    for (int row = 0; row < small.height; ++row) {
        std::copy_n(&small.rgb[static_cast<size_t>(row * small.width * 3)], small.width * 3,
                    &screen.rgb[static_cast<size_t>(((y + row) * 294 + x) * 3)]);
    }
    return screen;
}

using named_pictures = std::vector<std::pair<std::string, simulator::picture>>;

inline named_pictures read_all_pictures() {
    named_pictures all;
    std::vector<std::string> files = {"confirm", "success", "failure", "notallow"};
    for (int frame = 0; frame < 12; ++frame) {
        files.push_back("updating_" + std::to_string(frame));
    }
    for (const std::string &name : files) {
        all.emplace_back(name, read_bmp(PROMPT_PICTURES "/" + name + ".bmp"));
    }
    const struct {
        const char *name;
        int x, y;
    } built_in[] = {{"updating_bmp", 60, 44},
                    {"update_now_bmp", 10, 29},
                    {"update_success_bmp", 24, 44},
                    {"update_failed_bmp", 37, 44}};
    for (const auto &[name, x, y] : built_in) {
        const std::string file = std::string(BUILT_IN_PICTURES "/") + name + ".bmp";
        all.emplace_back(name, placed_on_black(read_bmp(file), x, y));
    }
    return all;
}

// The names of the pictures that the user saw, one after the other; "?" for an unknown one.
inline std::vector<std::string> shown_names(const simulator::outcome &end) {
    static const named_pictures known = read_all_pictures();
    std::vector<std::string> names;
    for (const simulator::picture &seen : end.pictures) {
        const auto found =
            std::ranges::find_if(known, [&](const auto &one) { return one.second == seen; });
        names.push_back(found == known.end() ? "?" : found->first);
    }
    return names;
}

inline std::string shown(const simulator::outcome &end) {
    std::string line;
    for (const std::string &name : shown_names(end)) {
        line += (line.empty() ? "" : " ") + name;
    }
    return line;
}

// The same with one word for all frames of the animation in a row.
inline std::string shown_with_animation(const simulator::outcome &end) {
    static const std::regex frames("updating_[0-9]+( updating_[0-9]+)*");
    return std::regex_replace(shown(end), frames, "animation");
}
