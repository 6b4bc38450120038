#include "status_screen.h"

#include "texts.h"

namespace oled_status {

namespace {

constexpr uint16_t text_height = 16;
constexpr uint32_t inverted = 1;
constexpr uint32_t transparent = 2;

constexpr renewer::box whole_screen = {0, 0, 128, 128};
constexpr renewer::box battery_place = {92, 4, 32, 32};
constexpr renewer::box fix_line = {4, 12, 88, text_height};
constexpr renewer::box position_line = {4, 44, 120, text_height};
constexpr renewer::box selection_line = {4, 68, 120, text_height};
constexpr renewer::box news_frame = {2, 98, 124, 24};
constexpr renewer::box news_line = {5, 102, 118, text_height};

} // namespace

text_strip::text_strip(const char *text) {
    const int32_t size = renewer::mw_disp_get_strbuf_size(text);
    if (size < 0) {
        return;
    }
    pixels.resize(static_cast<uint32_t>(size));
    strip = {0, text_height, pixels.data(), static_cast<uint32_t>(size)};
    rendered = renewer::mw_disp_str_to_strbuf(text, &strip) != nullptr;
}

bool text_strip::draw(const renewer::box &area, uint32_t flags, int32_t start) const {
    return rendered && renewer::mw_disp_check_box(&area) == 0 &&
           renewer::mw_disp_draw_strbuf_on_canvas(&strip, start, &area, flags) == 0;
}

bool compose(const renewer::bmpbuf &battery, const text_strip &news, int32_t scroll) {
    return renewer::mw_disp_clean_canvas() == 0 &&
           renewer::mw_disp_draw_border_on_canvas(&whole_screen, 1, 100) == 0 &&
           renewer::mw_disp_draw_bmpbuf_on_canvas(&battery, &battery_place, 0) == 0 &&
           text_strip(texts::fix).draw(fix_line) &&
           text_strip(texts::position).draw(position_line) &&
           text_strip(texts::selection).draw(selection_line, inverted) &&
           renewer::mw_disp_draw_border_on_canvas(&news_frame, 2, 40) == 0 &&
           news.draw(news_line, transparent, scroll);
}

} // namespace oled_status
