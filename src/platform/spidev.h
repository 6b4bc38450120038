#pragma once

#include <cstdint>

// A link to a display through an SPI device node of Linux (linux/spi/spidev.h).
namespace renewer {

// Whether a panel takes the bytes that follow as commands or as data.
enum class spidev_level { command, data };

// Sets the mode, the bits per word and the maximum clock in Hz of the link and reads each back into
// its place, so that they then hold what the kernel driver works with. A setting that the driver
// refuses, or does not know, is left as it was.
void spidev_configure(int fd, uint8_t &mode, uint8_t &bits_per_word, uint32_t &speed_hz);

// Returns whether there is something to send and something to send it through; says what is missing
// on standard output in the words that the displays share: "spi_write_cmd: file descriptor error!"
// or "spi_write_cdd: NULL pointer to command!" for commands, "spi_write_data: file descriptor
// error!" or "spi_write_data: NULL pointer to command!" for data.
bool spidev_can_send(int fd, const uint8_t *bytes, spidev_level level);

// Switches the panel's data/command line. The SPI driver of the unit takes two spidev requests with
// a plain integer argument for it; a standard spidev driver refuses them, which is not noticed.
void spidev_select(int fd, spidev_level level);

// Sends `length` bytes as one transfer, with a pause of `delay_us` microseconds after it. Data that
// the panel sends meanwhile is discarded.
//
// Returns the number of bytes sent; a negative value when the transfer failed, with the reason in
// errno. Prints nothing: each display has its own words for that.
int spidev_transfer(int fd, const uint8_t *bytes, uint32_t length, uint32_t speed_hz,
                    uint16_t delay_us, uint8_t bits_per_word);

} // namespace renewer
