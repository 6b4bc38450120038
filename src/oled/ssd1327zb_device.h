#pragma once

#include <cstdint>

// The grey OLED: 128 x 128 pixels of 16 levels behind an SSD1327 controller (Solomon Systech) and
// an SPI device node. Messages are lines on standard output.
namespace renewer {

// Opens the SPI device node at `path` (mode 0, 8 bits a word, 30 MHz), starts the panel up and
// switches it on. It shows what its memory holds until the first flush.
//
// Returns the descriptor, for `ssd1327zb_close`; -1, with nothing left open, when the node cannot
// be opened ("spi_oled__open: open /dev/spidev0.0 error!", whatever its path) or the start-up
// commands cannot be sent ("spi_write_cmd: ioctl command error!", then
// "spi_oled__open: spi_write_cmd error!").
int32_t ssd1327zb_open(const char *path);

// Shows a frame of 8192 bytes, pixels as in a `canvas`, in 129 transfers.
//
// Returns 0 even if transfers fail, each of which prints a line; -1 with nothing sent for no bytes
// ("ssd1327zd's canvas is null") or another count ("ssd1327zd's canvas size is not match!").
int32_t ssd1327zb_flush_full_screen(int32_t fd, const uint8_t *bytes, uint32_t count);

// Closes the descriptor. The panel stays on and keeps its picture.
//
// Returns 0, or -1 for a negative descriptor.
int32_t ssd1327zb_close(int32_t fd);

} // namespace renewer
