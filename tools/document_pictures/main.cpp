// Draws the documents' pictures of what the program does, or checks that the present ones are up to
// date and that oled.md shows the program's bytes:
//
//     document_pictures write DOCS
//     document_pictures check DOCS

#include "pictures.h"

#include "oled/ssd1327zb_fonts.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace document_pictures;
using simulator::picture;

struct document_set {
    std::map<std::string, picture> bitmaps;
    std::map<std::string, std::string> drawings;
    std::vector<std::string> bytes; // hexadecimal, as in oled.md
};

// Enlarges each pixel to a square of `times` x `times`.
picture enlarged(const picture &small, int times) {
    picture large = {small.width * times, small.height * times, {}};
    for (int y = 0; y < large.height; ++y) {
        for (int x = 0; x < large.width; ++x) {
            const auto from = small.rgb.begin() + (y / times * small.width + x / times) * 3;
            large.rgb.insert(large.rgb.end(), from, from + 3);
        }
    }
    return large;
}

std::string hex(const uint8_t *bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char digits[4];
        snprintf(digits, sizeof(digits), i == 0 ? "%02X" : " %02X", bytes[i]);
        text += digits;
    }
    return text;
}

document_set draw_all() {
    const oled_screen oled = run_oled_status();
    const std::vector<picture> lcd = run_screen_update();
    document_set all;
    all.bitmaps = {{"oled-status.png", enlarged(oled.shown, 3)},
                   {"oled-glyphs.png", enlarged(draw_glyph_sheet(), 2)},
                   {"lcd-confirm.png", lcd.front()},
                   {"lcd-updating.png", lcd[3]},
                   {"lcd-success.png", lcd.back()}};
    all.drawings = {{"lights.svg", draw_lights()}, {"rotation.svg", draw_rotation()}};
    all.bytes = oled.commands;
    all.bytes.push_back(
        hex(&renewer::AsciiCharac['A' * renewer::narrow_glyph_size], renewer::narrow_glyph_size));
    return all;
}

std::string content_of(const std::filesystem::path &file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text with each run of white space replaced by one blank.
std::string on_one_line(const std::string &text) {
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        line += word + " ";
    }
    return line;
}

void write(const document_set &all, const std::filesystem::path &docs) {
    for (const auto &[name, content] : all.bitmaps) {
        simulator::write_png(docs / "pictures" / name, content);
    }
    for (const auto &[name, content] : all.drawings) {
        std::ofstream(docs / "pictures" / name) << content;
    }
}

int check(const document_set &all, const std::filesystem::path &docs) {
    int status = 0;
    const auto complain_unless = [&status](bool right, const std::string &complaint) {
        if (!right) {
            fprintf(stderr, "%s\n", complaint.c_str());
            status = 1;
        }
    };
    for (const auto &[name, content] : all.bitmaps) {
        complain_unless(simulator::read_png(docs / "pictures" / name) == content,
                        name + " is not what would be drawn");
    }
    for (const auto &[name, content] : all.drawings) {
        complain_unless(content_of(docs / "pictures" / name) == content,
                        name + " is not what would be drawn");
    }
    const std::string text = on_one_line(content_of(docs / "oled.md"));
    for (const std::string &bytes : all.bytes) {
        complain_unless(text.find(bytes + " ") != text.npos, "oled.md does not show " + bytes);
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    const std::string command = argc == 3 ? argv[1] : "";
    try {
        if (command == "write") {
            write(draw_all(), argv[2]);
            return 0;
        }
        if (command == "check") {
            return check(draw_all(), argv[2]);
        }
        fprintf(stderr, "usage: document_pictures (write DOCS | check DOCS)\n");
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "document_pictures: %s\n", error.what());
        return 1;
    }
}
