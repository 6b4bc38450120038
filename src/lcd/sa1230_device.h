#pragma once

#include "lcd/sa1230_layer.h"

#include <cstdint>

// The colour LCD of the screen model: an SA1230 controller behind an SPI device node, 126 columns
// by 294 rows of 16 bits. Pictures are drawn on a surface of 294 x 126 pixels and rotated when they
// are sent. Messages go to standard output. Nothing is locked: one thread draws at a time.
namespace renewer {

// Opens the SPI device node at `path` (mode 0, 8 bits a word, 50 MHz), switches the panel on and
// starts it up; takes about a third of a second. The caller closes the descriptor; the panel then
// keeps showing its picture.
//
// Returns the descriptor, or -1 after "spi_oled__open: <path> error!" when the node cannot be
// opened. A panel that does not answer is not noticed.
int32_t sa1230_open(const char *path);

// Shows a picture file of "/reserve/update/": frame 0 to 128 of the animation ("updating_<n>.bmp"),
// 131 "confirm.bmp", 132 "success.bmp", 133 "failure.bmp", 134 "notallow.bmp".
//
// Returns 0 when it was sent, also when a transfer failed; -1 when there is no such picture
// ("bmp name error!"), it cannot be loaded (see `read_bmp_rgb565`) or shown (see
// `sa1230_show_layer`).
int32_t sa1230_update(int32_t fd, int32_t index);

// Shows a built-in picture in the middle of a black screen: 0 "Updating...", 1 "Update now?",
// 2 "Update Success!", 3 "Update Failed!".
//
// Returns 0, also when it could not be sent and, with "<number> is out range", for any other
// number; -1 without memory for the screen.
int32_t sa1230_default(int32_t fd, uint32_t number);

// The steps that these are made of.

// Sends bytes as one transfer at the command or at the data level.
//
// Returns the transfer's result, negative when it failed; -1 for a negative descriptor or missing
// bytes. Each failure prints a line: "spi_write_cmd: ..." ("spi_write_cdd: NULL pointer to
// command!") or "spi_write_data: ...".
int32_t spi_write_cmds(int32_t fd, const uint8_t *bytes, uint32_t length);
int32_t spi_write_data(int32_t fd, const uint8_t *bytes, uint32_t length);

// The same for one byte.
int32_t sa1230_write_cmd(int32_t fd, uint8_t command);
int32_t sa1230_write_data(int32_t fd, uint8_t data);

// Sends bytes at the data level in transfers of at most 4096, going on after one that failed.
//
// Returns the last transfer's result, 0 when there was nothing to send; -1 and prints as
// `spi_write_data` does.
int32_t spi_write_big_data(int32_t fd, const uint8_t *bytes, int32_t length);

// Switches the panel's power and reset lines and sends the start-up commands. Returns 0.
int32_t sa1230_init_simple(int32_t fd);

// Sets the part of the panel's memory that the next pixels go to; the ends belong to it. Returns 0.
int32_t sa1230_set_show_window(int32_t fd, uint16_t start_column, uint16_t end_column,
                               uint16_t start_row, uint16_t end_row);

// Makes the panel take data bytes as pixels, from the window's first one on. Returns 0.
int32_t sa1230_write_ram_prepare(int32_t fd);

// Sends a layer of at most 294 x 126 pixels to the panel, from the panel's first column and row on
// wherever the layer is placed.
//
// Returns 0, also when a transfer failed; -1 with nothing sent for a layer without pixels
// ("input err") or too large ("out of range"), without memory, or for a negative descriptor.
int32_t sa1230_show_layer(int32_t fd, sa1230_layer layer);

} // namespace renewer
