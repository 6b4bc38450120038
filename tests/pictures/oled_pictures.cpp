// Draws the pictures of the docs that show the OLED, or checks that they are as they would be drawn
// and that the bytes that oled.md shows are those of the program:
//
//     oled_pictures write DOCS
//     oled_pictures check DOCS
//     oled_pictures show
//
// "oled-status.png" is what the panel shows when the real driver has sent the status screen to it;
// "oled-glyphs.png" is the sheet of all glyphs of all tables. "show" draws the status screen on the
// terminal.

#include "oled/ssd1327zb_fonts.h"
#include "tests/support/files.h"
#include "tests/support/spi_boundary.h"
#include "tools/oled_status/status_screen.h"
#include "tools/oled_status/texts.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace renewer;
using simulator::picture;

// Each pixel as a square of `times` x `times`.
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

picture status_screen() {
    constexpr int32_t scroll = 44;
    spi().leads_to_oled = true;
    spi().wanted_speed = 30000000;
    if (mw_disp_init_module("ssd1327zb", "/dev/null") != 0) {
        throw std::runtime_error("no OLED");
    }
    bmpbuf *battery = mw_disp_bmp_to_bmpbuf(BATTERY_BMP);
    const oled_status::text_strip news(oled_status::texts::news);
    const bool shown = battery != nullptr && oled_status::compose(*battery, news, scroll) &&
                       mw_disp_flush_canvas_to_disp() == 0;
    mw_disp_destory_bmpbuf(&battery);
    mw_disp_uninit_module("ssd1327zb");
    if (!shown || spi().oled.faults() != simulator::ssd1327_panel::fault_counts{}) {
        throw std::runtime_error("the status screen cannot be shown");
    }
    return spi().oled.seen();
}

// The sheet: tables below each other, each after its name, cells in rows of 16.
class glyph_sheet {
public:
    void add_title(const std::string &text) {
        start_row();
        for (const char c : text) {
            add_cell(&AsciiCharac[static_cast<size_t>(c) * narrow_glyph_size], narrow_columns,
                     false);
        }
        start_row();
    }
    void add_table(const std::string &name, const uint8_t *glyphs, size_t count, size_t entry_size,
                   size_t columns) {
        add_title(name);
        for (size_t i = 0; i < count; ++i) {
            if (i > 0 && i % cells_a_row == 0) {
                start_row();
            }
            add_cell(glyphs + i * entry_size, columns, true);
        }
        start_row();
        y += gap;
    }
    picture drawn() {
        content.height = y;
        content.rgb.resize(static_cast<size_t>(content.width * content.height * 3));
        return content;
    }

private:
    static constexpr size_t cells_a_row = 32;
    static constexpr int gap = 1;
    static constexpr int row_height = 16 + gap;

    void start_row() {
        if (x > gap) {
            y += row_height;
        }
        x = gap;
    }
    // Bit r of a glyph's byte c is row r of column c, in the upper and then in the lower half.
    void add_cell(const uint8_t *glyph, size_t columns, bool on_ground) {
        content.rgb.resize(static_cast<size_t>(content.width * (y + row_height) * 3));
        for (size_t i = 0; i < columns * 16; ++i) {
            const size_t row = i / columns, column = i % columns;
            const int ink = glyph[row / 8 * columns + column] >> row % 8 & 1;
            const uint8_t level = ink != 0 ? 255 : on_ground ? 70 : 0;
            const size_t place = static_cast<size_t>(y + static_cast<int>(row)) *
                                     static_cast<size_t>(content.width) +
                                 static_cast<size_t>(x) + column;
            memset(&content.rgb[place * 3], level, 3);
        }
        x += static_cast<int>(columns) + (on_ground ? gap : 0);
    }

    int x = gap, y = gap;
    picture content = {cells_a_row * (wide_columns + gap) + gap, 0, {}};
};

picture all_glyphs() {
    glyph_sheet sheet;
    sheet.add_table("AsciiCharac", AsciiCharac.data(), ascii_glyphs, narrow_glyph_size,
                    narrow_columns);
    sheet.add_table("ChineseCharac", ChineseCharac.data(), chinese_entries, chinese_entry_size,
                    wide_columns);
    sheet.add_table("ChineseNone", ChineseNone.data(), 1, chinese_entry_size, wide_columns);
    sheet.add_table("RussianCharac", RussianCharac.data(), russian_entries, russian_entry_size,
                    narrow_columns);
    sheet.add_table("RussianNone", RussianNone.data(), 1, russian_entry_size, narrow_columns);
    sheet.add_table("TurkeyCharacSpec", TurkeyCharacSpec.data(), turkey_glyphs, narrow_glyph_size,
                    narrow_columns);
    return sheet.drawn();
}

const std::map<std::string, std::function<picture()>> pictures = {
    {"oled-status.png", [] { return enlarged(status_screen(), 3); }},
    {"oled-glyphs.png", [] { return enlarged(all_glyphs(), 2); }},
};

// A text with each run of blanks and line ends as one blank.
std::string on_one_line(const std::string &text) {
    std::istringstream words(text);
    std::string line;
    for (std::string word; words >> word;) {
        line += word + " ";
    }
    return line;
}

std::string hex(const uint8_t *bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char digits[4];
        snprintf(digits, sizeof(digits), "%02X ", bytes[i]);
        text += digits;
    }
    return text;
}

// What oled.md shows in hexadecimal: the commands that were sent, and a glyph.
std::vector<std::string> shown_bytes() {
    spi().forget();
    status_screen();
    std::vector<std::string> shown = {
        hex(&AsciiCharac['A' * narrow_glyph_size], narrow_glyph_size)};
    std::istringstream transcript(spi().transcript);
    for (std::string line; std::getline(transcript, line);) {
        const std::string command = "command ";
        if (line.starts_with(command) && line != "command level") {
            shown.push_back(line.substr(command.size()) + " ");
        }
    }
    return shown;
}

int check(const std::filesystem::path &docs) {
    int status = 0;
    for (const auto &[name, draw] : pictures) {
        if (!(simulator::read_png(docs / "pictures" / name) == draw())) {
            fprintf(stderr, "%s is not what would be drawn\n", name.c_str());
            status = 1;
        }
    }
    const std::string text = on_one_line(get_file(docs / "oled.md"));
    for (const std::string &bytes : shown_bytes()) {
        if (text.find(bytes) == text.npos) {
            fprintf(stderr, "oled.md does not show %s\n", bytes.c_str());
            status = 1;
        }
    }
    return status;
}

} // namespace

int main(int argc, char **argv) {
    const std::string command = argc > 1 ? argv[1] : "";
    try {
        if (argc == 3 && command == "write") {
            for (const auto &[name, draw] : pictures) {
                simulator::write_png(std::filesystem::path(argv[2]) / "pictures" / name, draw());
            }
            return 0;
        }
        if (argc == 3 && command == "check") {
            return check(argv[2]);
        }
        fprintf(stderr, "usage: oled_pictures (write DOCS | check DOCS)\n");
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "oled_pictures: %s\n", error.what());
        return 1;
    }
}
