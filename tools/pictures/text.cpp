#include "canvas.h"

#include <cmath>
#include <map>
#include <memory>
#include <stdexcept>

#include <ft2build.h>
#include FT_FREETYPE_H

namespace pictures {

namespace {

using library = std::unique_ptr<FT_LibraryRec_, decltype(&FT_Done_FreeType)>;
using face = std::unique_ptr<FT_FaceRec_, decltype(&FT_Done_Face)>;

// Positions of ink relative to the start of the line, and how much of each pixel it covers.
using ink = std::map<std::pair<int, int>, double>;

library open_library() {
    FT_Library opened = nullptr;
    if (FT_Init_FreeType(&opened) != 0) {
        throw std::runtime_error("FreeType does not start");
    }
    return {opened, FT_Done_FreeType};
}

face open_face(FT_Library in, const std::filesystem::path &font, double size) {
    FT_Face opened = nullptr;
    if (FT_New_Face(in, font.c_str(), 0, &opened) != 0) {
        throw std::runtime_error("cannot read the font " + font.string());
    }
    face result(opened, FT_Done_Face);
    // Sizes are in 64ths of a point; 72 points are an inch, so at 72 dpi a point is a pixel.
    FT_Set_Char_Size(opened, 0, std::lround(size * 64), 72, 72);
    return result;
}

void add_glyph(ink &to, const FT_GlyphSlotRec_ &glyph, int pen) {
    for (unsigned row = 0; row < glyph.bitmap.rows; ++row) {
        const unsigned char *const line =
            glyph.bitmap.buffer + static_cast<ptrdiff_t>(row) * glyph.bitmap.pitch;
        for (unsigned column = 0; column < glyph.bitmap.width; ++column) {
            if (line[column] != 0) {
                double &coverage = to[{pen + glyph.bitmap_left + static_cast<int>(column),
                                       static_cast<int>(row) - glyph.bitmap_top}];
                coverage = std::max(coverage, line[column] / 255.0);
            }
        }
    }
}

ink set_line(FT_Face with, const std::string &text) {
    ink result;
    FT_Pos pen = 0; // in 64ths of a pixel
    FT_UInt previous = 0;
    for (const char character : text) {
        const FT_UInt index = FT_Get_Char_Index(with, static_cast<unsigned char>(character));
        FT_Vector kerning{};
        if (index == 0 || FT_Load_Glyph(with, index, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT) != 0) {
            throw std::runtime_error("the font lacks a character of \"" + text + "\"");
        }
        FT_Get_Kerning(with, previous, index, FT_KERNING_DEFAULT, &kerning);
        pen += kerning.x;
        add_glyph(result, *with->glyph, static_cast<int>(pen / 64));
        pen += with->glyph->advance.x;
        previous = index;
    }
    return result;
}

} // namespace

void draw_text(canvas &on, const std::filesystem::path &font, double size, point place,
               anchor anchored, colour paint, const std::string &text) {
    const library opened = open_library();
    const face with = open_face(opened.get(), font, size);
    const ink line = set_line(with.get(), text);
    if (line.empty()) {
        return;
    }
    int left = line.begin()->first.first, right = left;
    int top = line.begin()->first.second, bottom = top;
    for (const auto &[at, coverage] : line) {
        left = std::min(left, at.first);
        right = std::max(right, at.first + 1);
        top = std::min(top, at.second);
        bottom = std::max(bottom, at.second + 1);
    }
    const int x = static_cast<int>(std::floor(place.x - anchored.x * (right - left))) - left;
    const int y = static_cast<int>(std::floor(place.y - anchored.y * (bottom - top))) - top;
    if (x + left < 0 || y + top < 0 || x + right > on.width || y + bottom > on.height) {
        throw std::runtime_error("\"" + text + "\" needs " + std::to_string(right - left) + " x " +
                                 std::to_string(bottom - top) +
                                 " pixels and does not lie wholly inside");
    }
    for (const auto &[at, coverage] : line) {
        on.blend(x + at.first, y + at.second, paint, coverage);
    }
}

} // namespace pictures
