#include "pictures.h"

#include "oled/ssd1327zb_fonts.h"

#include <algorithm>

namespace document_pictures {

using namespace renewer;
using simulator::picture;

namespace {

// The sheet: one table below the other, each with its name above rows of cells.
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
            std::fill_n(&content.rgb[place * 3], 3, level);
        }
        x += static_cast<int>(columns) + (on_ground ? gap : 0);
    }

    int x = gap, y = gap;
    picture content = {cells_a_row * (wide_columns + gap) + gap, 0, {}};
};

} // namespace

picture draw_glyph_sheet() {
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

} // namespace document_pictures
