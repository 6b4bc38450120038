#pragma once

#include "oled/ssd1327zb_canvas_handler.h"

// The display middleware: drives one display module by its name. A text is drawn in three steps:
// `mw_disp_get_strbuf_size` for the strip's bytes, `mw_disp_str_to_strbuf` to render it,
// `mw_disp_draw_strbuf_on_canvas` to draw it, as often as wanted; `mw_disp_flush_canvas_to_disp`
// then shows what was drawn.
//
// Messages are lines on standard output. Nothing is locked: one thread at a time.
namespace renewer {

// The registered module, null while there is none.
extern canvas_handler *g_canvas_handler;

// Registers the module `name`, of which there is "ssd1327zb" (in upper or lower case), on the
// device node `path`.
//
// Returns 0 after "<path> have been init" and "create_ssd1327sd_canvas_handler success". Returns -1
// for any other name, silently; when a module is registered already ("<name> have been init"); and,
// with nothing registered, when the module cannot be created: then the module's own lines, "<path>
// have been init" and "create_ssd1327sd_canvas_handler failed".
int mw_disp_init_module(const char *name, const char *path);

// Releases the registered module when it is registered as `name` (in upper or lower case): its
// device and its canvas. Pictures and strips still belong to their owners.
//
// Returns -1 in every case, also after the release, which prints nothing. Otherwise it prints "The
// disp module name that would to be uninit is null", "There was no disp module init" or
// "The init module <registered> is not <name>".
int mw_disp_uninit_module(const char *name);

// The rest forwards to the registered module's operation, on its device and canvas; see the
// `ssd1327zb_` operation of the same name for arguments and results. Without what it needs (its
// arguments, a registered module, the module's operation, looked at in this order) an operation
// returns -1 or null; where it says so it prints
//   "There is NULL pointer function params input",
//   "There was no disp module init" or
//   "There was no <operation> function registerd".

// Prints the latter two.
int mw_disp_flush_canvas_to_disp();
int mw_disp_clean_canvas();

// Print none of them.
int mw_disp_check_box(const box *area);
int mw_disp_draw_border_on_canvas(const box *area, uint8_t thickness, uint8_t percentage);
int32_t mw_disp_get_strbuf_size(const char *text);
strbuf *mw_disp_str_to_strbuf(const char *text, strbuf *strip);
int mw_disp_draw_strbuf_on_canvas(const strbuf *strip, int32_t start, const box *area,
                                  uint32_t flags);

// Prints the latter two.
bmpbuf *mw_disp_bmp_to_bmpbuf(const char *path);

// Print all three.
int mw_disp_draw_bmpbuf_on_canvas(const bmpbuf *picture, const box *area, uint32_t flags);
void mw_disp_destory_bmpbuf(bmpbuf **picture);

} // namespace renewer
