// Shows a text in a frame on the unit's OLED:
//
//     oled_hello DEVICE TEXT

#include "oled/canvas.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr uint16_t text_height = 16;
constexpr renewer::box whole_screen = {0, 0, 128, 128};
constexpr renewer::box text_line = {4, 56, 120, text_height};

bool draw_text(const char *text) {
    const int32_t size = renewer::mw_disp_get_strbuf_size(text);
    auto *const pixels = static_cast<uint8_t *>(size > 0 ? malloc(size_t(size)) : nullptr);
    renewer::strbuf strip = {0, text_height, pixels, static_cast<uint32_t>(size)};
    const bool drawn = pixels != nullptr &&
                       renewer::mw_disp_str_to_strbuf(text, &strip) != nullptr &&
                       renewer::mw_disp_draw_strbuf_on_canvas(&strip, 0, &text_line, 0) == 0;
    free(pixels);
    return drawn;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        fputs("usage: oled_hello DEVICE TEXT\n", stderr);
        return 2;
    }
    if (renewer::mw_disp_init_module("ssd1327zb", argv[1]) != 0) {
        return 1;
    }
    const bool shown = renewer::mw_disp_clean_canvas() == 0 &&
                       renewer::mw_disp_draw_border_on_canvas(&whole_screen, 1, 100) == 0 &&
                       draw_text(argv[2]) && renewer::mw_disp_flush_canvas_to_disp() == 0;
    renewer::mw_disp_uninit_module("ssd1327zb"); // the panel keeps the picture
    return shown ? 0 : 1;
}
