#include "oled/ssd1327zb_canvas_handler.h"

#include "oled/ssd1327zb_device.h"
#include "oled/ssd1327zb_draw_border.h"
#include "platform/owner.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace renewer {

namespace {

constexpr canvas_handler ssd1327zb_module = {
    .fd = -1,
    .canvas = nullptr,
    .name = {},
    .open = ssd1327zb_open,
    .flush_canvas_to_disp = ssd1327zb_flush_full_screen,
    .close = ssd1327zb_close,
    .create_canvas = ssd1327zb_create_canvas,
    .clean_canvas = ssd1327zb_clean_canvas,
    .destroy_canvas = ssd1327zb_destroy_canvas,
    .check_box = ssd1327zb_check_box,
    .bmp_to_bmpbuf = ssd1327zb_bmp_to_bmpbuf,
    .draw_bmpbuf_on_canvas = ssd1327zb_draw_bmpbuf_on_canvas,
    .destory_bmpbuf = ssd1327zb_destory_bmpbuf,
    .draw_border_on_canvas = ssd1327zb_draw_border_on_canvas,
    .get_strbuf_size = ssd1327zb_get_strbuf_size,
    .str_to_strbuf = ssd1327zb_str_to_strbuf,
    .draw_strbuf_on_canvas = ssd1327zb_draw_strbuf_on_canvas,
};

} // namespace

canvas_handler *create_ssd1327sd_canvas_handler(const char *name, const char *path) {
    owned_memory<canvas_handler> handler(
        static_cast<canvas_handler *>(malloc(sizeof(canvas_handler))));
    if (handler == nullptr) {
        return nullptr;
    }
    canvas *frame = ssd1327zb_create_canvas();
    if (frame == nullptr) {
        return nullptr;
    }
    const int32_t fd = ssd1327zb_open(path);
    if (fd < 0) {
        ssd1327zb_destroy_canvas(&frame);
        printf("open %s failed\n", path != nullptr ? path : "(null)");
        return nullptr;
    }
    *handler = ssd1327zb_module;
    handler->fd = fd;
    handler->canvas = frame;
    if (name != nullptr) {
        memcpy(handler->name, name, strnlen(name, sizeof(handler->name) - 1));
    }
    return handler.release();
}

void destory_ssd1327sd_canvas_handler(canvas_handler **handler) {
    if (handler == nullptr || *handler == nullptr) {
        return;
    }
    const owned_memory<canvas_handler> record(std::exchange(*handler, nullptr));
    if (record->close != nullptr) {
        record->close(record->fd);
    }
    record->fd = -1;
    if (record->destroy_canvas != nullptr) {
        record->destroy_canvas(&record->canvas);
    }
}

} // namespace renewer
