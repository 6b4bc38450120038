#pragma once

#include "oled/ssd1327zb_canvas.h"
#include "oled/ssd1327zb_draw_bmp.h"
#include "oled/ssd1327zb_draw_text.h"

namespace renewer {

// A display module as the middleware drives it: its open device, its canvas and its operations.
// An operation that is null is one that the module does not have.
struct canvas_handler {
    int32_t fd;            // the module's open device, -1 once closed
    struct canvas *canvas; // owned
    char name[128];        // what the module was registered as, always terminated

    int32_t (*open)(const char *path);
    int32_t (*flush_canvas_to_disp)(int32_t fd, const uint8_t *bytes, uint32_t count);
    int32_t (*close)(int32_t fd);
    struct canvas *(*create_canvas)();
    int (*clean_canvas)(struct canvas *frame);
    void (*destroy_canvas)(struct canvas **frame);
    int (*check_box)(const box *area);
    bmpbuf *(*bmp_to_bmpbuf)(const char *path);
    int (*draw_bmpbuf_on_canvas)(const bmpbuf *picture, struct canvas *frame, const box *area,
                                 uint32_t flags);
    void (*destory_bmpbuf)(bmpbuf **picture);
    int (*draw_border_on_canvas)(struct canvas *frame, const box *area, uint8_t thickness,
                                 uint8_t percentage);
    int32_t (*get_strbuf_size)(const char *text);
    strbuf *(*str_to_strbuf)(const char *text, strbuf *strip);
    int (*draw_strbuf_on_canvas)(const strbuf *strip, int32_t start, struct canvas *frame,
                                 const box *area, uint32_t flags);
};

// Opens the grey OLED at the SPI device node `path` and makes the record of it, with a dark canvas,
// every operation, and at most 127 characters of `name`. The caller releases it with
// `destory_ssd1327sd_canvas_handler`.
//
// Returns null with nothing left open or allocated: without memory, or, after what `ssd1327zb_open`
// prints and "open <path> failed", without the device.
canvas_handler *create_ssd1327sd_canvas_handler(const char *name, const char *path);

// Closes the device, frees the canvas and the record at `*handler` and makes the pointer null;
// nothing when either is null already. Device and canvas are released through the record's own
// operations, as far as it has them.
void destory_ssd1327sd_canvas_handler(canvas_handler **handler);

} // namespace renewer
