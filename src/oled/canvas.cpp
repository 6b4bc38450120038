#include "oled/canvas.h"

#include "platform/debug.h"

#include <cstdio>
#include <strings.h>

namespace renewer {

canvas_handler *g_canvas_handler = nullptr;

namespace {

constexpr const char *ssd1327zb_name = "ssd1327zb";

constexpr const char *null_argument = "There is NULL pointer function params input";
constexpr const char *nothing_registered = "There was no disp module init";

// Says why when an operation cannot be forwarded: `operation` is the field of the registered
// record.
template <typename slot>
bool can_forward(slot canvas_handler::*operation, const char *missing_operation) {
    if (g_canvas_handler == nullptr) {
        puts(nothing_registered);
        return false;
    }
    if (g_canvas_handler->*operation == nullptr) {
        puts(missing_operation);
        return false;
    }
    return true;
}

template <typename slot>
bool has(slot canvas_handler::*operation) {
    return g_canvas_handler != nullptr && g_canvas_handler->*operation != nullptr;
}

} // namespace

int mw_disp_init_module(const char *name, const char *path) {
    if (name == nullptr || strcasecmp(name, ssd1327zb_name) != 0) {
        return -1;
    }
    if (g_canvas_handler != nullptr) {
        printf("%s have been init\n", name);
        return -1;
    }
    g_canvas_handler = create_ssd1327sd_canvas_handler(name, path);
    printf("%s have been init\n", path != nullptr ? path : "(null)");
    if (g_canvas_handler == nullptr) {
        puts("create_ssd1327sd_canvas_handler failed");
        return -1;
    }
    puts("create_ssd1327sd_canvas_handler success");
    return 0;
}

int mw_disp_uninit_module(const char *name) {
    if (name == nullptr) {
        puts("The disp module name that would to be uninit is null");
    } else if (g_canvas_handler == nullptr) {
        puts(nothing_registered);
    } else if (strcasecmp(g_canvas_handler->name, name) != 0) {
        printf("The init module %s is not %s\n", g_canvas_handler->name, name);
    } else {
        destory_ssd1327sd_canvas_handler(&g_canvas_handler);
    }
    return -1;
}

int mw_disp_flush_canvas_to_disp() {
    if (!can_forward(&canvas_handler::flush_canvas_to_disp,
                     "There was no flush_canvas_to_disp function registerd")) {
        return -1;
    }
    const canvas *const frame = g_canvas_handler->canvas;
    return g_canvas_handler->flush_canvas_to_disp(g_canvas_handler->fd,
                                                  frame != nullptr ? frame->buf : nullptr,
                                                  frame != nullptr ? frame->size : 0);
}

int mw_disp_clean_canvas() {
    if (!can_forward(&canvas_handler::clean_canvas,
                     "There was no clean_canvas function registerd")) {
        return -1;
    }
    return g_canvas_handler->clean_canvas(g_canvas_handler->canvas);
}

int mw_disp_check_box(const box *area) {
    return has(&canvas_handler::check_box) ? g_canvas_handler->check_box(area) : -1;
}

bmpbuf *mw_disp_bmp_to_bmpbuf(const char *path) {
    if (g_canvas_handler == nullptr) {
        debug(6, "%s %d : There was no disp module init\n", __func__, __LINE__);
    }
    if (!can_forward(&canvas_handler::bmp_to_bmpbuf,
                     "There was no bmp_to_bmpbuf function registerd")) {
        return nullptr;
    }
    return g_canvas_handler->bmp_to_bmpbuf(path);
}

int mw_disp_draw_bmpbuf_on_canvas(const bmpbuf *picture, const box *area, uint32_t flags) {
    if (picture == nullptr || picture->buf == nullptr || area == nullptr) {
        puts(null_argument);
        return -1;
    }
    if (g_canvas_handler != nullptr && g_canvas_handler->draw_bmpbuf_on_canvas == nullptr) {
        debug(6, "%s %d : There was no draw_bmpbuf_on_canvas function registerd\n", __func__,
              __LINE__);
    }
    if (!can_forward(&canvas_handler::draw_bmpbuf_on_canvas,
                     "There was no draw_bmpbuf_on_canvas function registerd")) {
        return -1;
    }
    return g_canvas_handler->draw_bmpbuf_on_canvas(picture, g_canvas_handler->canvas, area, flags);
}

void mw_disp_destory_bmpbuf(bmpbuf **picture) {
    if (picture == nullptr) {
        puts(null_argument);
    } else if (can_forward(&canvas_handler::destory_bmpbuf,
                           "There was no destory_bmpbuf function registerd")) {
        g_canvas_handler->destory_bmpbuf(picture);
    }
}

int mw_disp_draw_border_on_canvas(const box *area, uint8_t thickness, uint8_t percentage) {
    if (area == nullptr || !has(&canvas_handler::draw_border_on_canvas)) {
        return -1;
    }
    return g_canvas_handler->draw_border_on_canvas(g_canvas_handler->canvas, area, thickness,
                                                   percentage);
}

int32_t mw_disp_get_strbuf_size(const char *text) {
    if (text == nullptr || !has(&canvas_handler::get_strbuf_size)) {
        return -1;
    }
    return g_canvas_handler->get_strbuf_size(text);
}

strbuf *mw_disp_str_to_strbuf(const char *text, strbuf *strip) {
    if (text == nullptr || strip == nullptr || !has(&canvas_handler::str_to_strbuf)) {
        return nullptr;
    }
    return g_canvas_handler->str_to_strbuf(text, strip);
}

int mw_disp_draw_strbuf_on_canvas(const strbuf *strip, int32_t start, const box *area,
                                  uint32_t flags) {
    if (strip == nullptr || area == nullptr || !has(&canvas_handler::draw_strbuf_on_canvas)) {
        return -1;
    }
    return g_canvas_handler->draw_strbuf_on_canvas(strip, start, g_canvas_handler->canvas, area,
                                                   flags);
}

} // namespace renewer
