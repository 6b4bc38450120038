// Shows a status screen with a scrolling line on the unit's OLED, with the display middleware only:
//
//     renewer-oled-status DEVICE BATTERY_BMP [STEPS]
//
// DEVICE is the OLED's SPI device node. The line scrolls through once, or by STEPS steps of two
// columns.

#include "status_screen.h"
#include "texts.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

constexpr int32_t columns_a_step = 2;
constexpr useconds_t pause_us = 40000;

bool run(const renewer::bmpbuf &battery, int steps) {
    const oled_status::text_strip news(oled_status::texts::news);
    for (int step = 0; steps < 0 ? step * columns_a_step <= news.width() : step <= steps; ++step) {
        const int32_t scroll = step * columns_a_step % (news.width() + 1);
        if (!oled_status::compose(battery, news, scroll) ||
            renewer::mw_disp_flush_canvas_to_disp() != 0) {
            return false;
        }
        usleep(pause_us);
    }
    return true;
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3 && argc != 4) {
        fprintf(stderr, "usage: renewer-oled-status DEVICE BATTERY_BMP [STEPS]\n");
        return 2;
    }
    if (renewer::mw_disp_init_module("ssd1327zb", argv[1]) != 0) {
        return 1;
    }
    renewer::bmpbuf *battery = renewer::mw_disp_bmp_to_bmpbuf(argv[2]);
    const bool shown = battery != nullptr && run(*battery, argc == 4 ? atoi(argv[3]) : -1);
    renewer::mw_disp_destory_bmpbuf(&battery);
    renewer::mw_disp_uninit_module("ssd1327zb");
    return shown ? 0 : 1;
}
