#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

// Executes a script on a panel, word by word: "C" and bytes in hexadecimal are sent at the
// command level, "D" and bytes at the data level; "P" and "R" with 0 or 1 set the power and the
// reset line.
template <typename panel_type>
void act(panel_type &panel, const std::string &script) {
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        std::vector<uint8_t> bytes;
        for (size_t i = 1; i < word.size(); i += 2) {
            bytes.push_back(static_cast<uint8_t>(std::stoi(word.substr(i, 2), nullptr, 16)));
        }
        if constexpr (requires { panel.power(true); }) {
            if (word[0] == 'P' || word[0] == 'R') {
                word[0] == 'P' ? panel.power(bytes[0] != 0) : panel.reset(bytes[0] != 0);
                continue;
            }
        }
        panel.level(word[0] == 'D' ? 1 : 0);
        panel.transfer(bytes);
    }
}
