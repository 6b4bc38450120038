#include "oled/ssd1327zb_device.h"

#include "oled/ssd1327zb_canvas.h"
#include "platform/owner.h"
#include "platform/spidev.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace renewer {

namespace {

uint8_t s_ucMode = 0;
uint8_t s_ucBits = 8;
uint32_t s_uSpeed = 30000000;
uint16_t s_uiDelay = 0;

// SSD1327 data sheet, command table. A command's parameters go out at the command level too.
constexpr std::array<uint8_t, 35> start_up = {
    0xAE,             // display off
    0x15, 0x00, 0x3F, // column addresses 0 to 63, of two pixels each
    0x75, 0x00, 0x7F, // row addresses 0 to 127
    0x81, 0x80,       // contrast 128
    0xA0, 0x53,       // re-map: columns, nibbles and COM lines reversed, COM lines split
    0xA1, 0x00,       // display start line 0
    0xA2, 0x00,       // display offset 0
    0xA4,             // normal display
    0xA8, 0x7F,       // multiplex ratio 128
    0xB1, 0xF1,       // phase lengths
    0xB3, 0x00,       // front clock divider and oscillator frequency
    0xAB, 0x01,       // function selection A: internal regulator on
    0xB6, 0x0F,       // second pre-charge period
    0xBE, 0x0F,       // VCOMH level
    0xBC, 0x08,       // pre-charge voltage
    0xD5, 0x62,       // function selection B
    0xFD, 0x12,       // command lock: unlocked
    0xAF,             // display on
};

constexpr std::array<uint8_t, 6> whole_window = {0x15, 0x00, 0x3F, 0x75, 0x00, 0x7F};

constexpr uint32_t row_size = ssd1327zb_width / 2;

int32_t spi_write(int32_t fd, spidev_level level, const uint8_t *bytes, uint32_t length,
                  const char *failure) {
    if (!spidev_can_send(fd, bytes, level)) {
        return -1;
    }
    spidev_select(fd, level);
    const int32_t result = spidev_transfer(fd, bytes, length, s_uSpeed, s_uiDelay, s_ucBits);
    if (result < 0) {
        puts(failure);
    }
    return result;
}

int32_t spi_write_cmds(int32_t fd, const uint8_t *bytes, uint32_t length) {
    return spi_write(fd, spidev_level::command, bytes, length,
                     "spi_write_cmd: ioctl command error!");
}

int32_t spi_write_data(int32_t fd, const uint8_t *bytes, uint32_t length) {
    return spi_write(fd, spidev_level::data, bytes, length, "spi_write_data: ioctl command error!");
}

// Starts up the panel behind the node. Returns the node, or none, with it closed, if that fails.
owned_descriptor started_up(owned_descriptor node) {
    spidev_configure(node.get(), s_ucMode, s_ucBits, s_uSpeed);
    const bool sent = spi_write_cmds(node.get(), start_up.data(), start_up.size()) >= 0;
    return sent ? std::move(node) : owned_descriptor();
}

} // namespace

int32_t ssd1327zb_open(const char *path) {
    owned_descriptor node(path != nullptr ? open(path, O_RDWR | O_CLOEXEC) : -1);
    if (!node) {
        puts("spi_oled__open: open /dev/spidev0.0 error!");
        return -1;
    }
    owned_descriptor panel = started_up(std::move(node));
    if (!panel) {
        puts("spi_oled__open: spi_write_cmd error!");
        return -1;
    }
    return panel.release();
}

int32_t ssd1327zb_flush_full_screen(int32_t fd, const uint8_t *bytes, uint32_t count) {
    if (bytes == nullptr) {
        puts("ssd1327zd's canvas is null");
        return -1;
    }
    if (count != ssd1327zb_frame_size) {
        puts("ssd1327zd's canvas size is not match!");
        return -1;
    }
    // Errors are printed and otherwise ignored: the next frame sets the window anew and sends every
    // row.
    spi_write_cmds(fd, whole_window.data(), whole_window.size());
    for (uint32_t row = 0; row < ssd1327zb_height; ++row) {
        spi_write_data(fd, bytes + row * row_size, row_size);
    }
    return 0;
}

int32_t ssd1327zb_close(int32_t fd) {
    if (fd < 0) {
        return -1;
    }
    close(fd);
    return 0;
}

} // namespace renewer
