#include "simulator/terminal_picture.h"

namespace simulator {

namespace {

std::string colour(const picture &content, int x, int y, const char *ground) {
    const uint8_t *const pixel =
        content.rgb.data() + (static_cast<ptrdiff_t>(y) * content.width + x) * 3;
    return std::string("\033[") + ground + ";2;" + std::to_string(pixel[0]) + ";" +
           std::to_string(pixel[1]) + ";" + std::to_string(pixel[2]) + "m";
}

} // namespace

std::string terminal_text(const picture &content) {
    std::string text;
    for (int y = 0; y < content.height; y += 2) {
        std::string last;
        for (int x = 0; x < content.width; ++x) {
            std::string colours = colour(content, x, y, "38");
            if (y + 1 < content.height) {
                colours += colour(content, x, y + 1, "48");
            }
            text += colours == last ? "▀" : colours + "▀";
            last = colours;
        }
        text += "\033[0m\n";
    }
    return text;
}

} // namespace simulator
