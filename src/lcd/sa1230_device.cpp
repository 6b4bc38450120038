#include "lcd/sa1230_device.h"

#include "bmp/mw_bmp.h"
#include "lcd/sa1230_pictures.h"
#include "platform/debug.h"
#include "platform/owner.h"
#include "platform/shell.h"
#include "platform/spidev.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace renewer {

namespace {

uint8_t s_ucMode = 0;
uint8_t s_ucBits = 8;
uint32_t s_uSpeed = 50000000;
uint16_t s_uiDelay = 0;

constexpr int32_t longest_transfer = 4096; // what spidev's buffer holds (bufsiz) by default

// Commands of the MIPI display command set (DCS), but for the first.
enum dcs_command : uint8_t {
    controller_setting = 0xFE,
    exit_sleep_mode = 0x11,
    set_display_on = 0x29,
    set_column_address = 0x2A,
    set_page_address = 0x2B,
    write_memory_start = 0x2C,
    set_tear_on = 0x35,
    set_pixel_format = 0x3A,
    set_display_brightness = 0x51,
};

// The rotated picture that is sent; its buffer is kept for the life of the process.
sa1230_layer out{};

int32_t send_data(int32_t fd, const uint8_t *bytes, uint32_t length) {
    const int32_t result = spidev_transfer(fd, bytes, length, s_uSpeed, s_uiDelay, s_ucBits);
    if (result < 0) {
        printf("spi_write_data: ioctl command error %s!\n", strerror(errno));
    }
    return result;
}

struct line_switch {
    const char *command;
    useconds_t wait_us;
};

// Power, then a low pulse on the reset line.
constexpr std::array<line_switch, 4> power_up = {{
    {"echo 255 > /sys/class/leds/Oled_Power/brightness", 5000},
    {"echo 255 > /sys/class/leds/Oled_Rst/brightness", 5000},
    {"echo 0   > /sys/class/leds/Oled_Rst/brightness", 5000},
    {"echo 255 > /sys/class/leds/Oled_Rst/brightness", 15000},
}};

struct start_up_command {
    uint8_t command;
    uint8_t data_count;
    std::array<uint8_t, 4> data;
    useconds_t wait_us;
};

constexpr std::array<start_up_command, 8> start_up = {{
    {controller_setting, 1, {0x00}, 0},
    {set_column_address, 4, {0x00, 0x00, 0x00, 0x7D}, 0}, // columns 0 to 125
    {set_page_address, 4, {0x00, 0x00, 0x01, 0x25}, 0},   // rows 0 to 293
    {set_tear_on, 1, {0x00}, 0},                          // at each vertical blanking
    {set_display_brightness, 1, {0xFF}, 0},
    {set_pixel_format, 1, {0x05}, 0}, // 16 bits a pixel
    {exit_sleep_mode, 0, {}, 150000},
    {set_display_on, 0, {}, 150000},
}};

void write_range(int32_t fd, uint8_t command, uint16_t start, uint16_t end) {
    const std::array<uint8_t, 4> range = {
        static_cast<uint8_t>(start >> 8), static_cast<uint8_t>(start),
        static_cast<uint8_t>(end >> 8), static_cast<uint8_t>(end)};
    sa1230_write_cmd(fd, command);
    spi_write_data(fd, range.data(), range.size());
}

struct named_picture {
    int32_t index;
    const char *path;
};

constexpr int32_t last_frame = 128;
constexpr std::array<named_picture, 4> final_pictures = {{
    {131, "/reserve/update/confirm.bmp"},
    {132, "/reserve/update/success.bmp"},
    {133, "/reserve/update/failure.bmp"},
    {134, "/reserve/update/notallow.bmp"},
}};

using picture_path = std::array<char, 64>;

bool find_picture(int32_t index, picture_path &path) {
    if (index >= 0 && index <= last_frame) {
        snprintf(path.data(), path.size(), "/reserve/update/updating_%d.bmp", index);
        return true;
    }
    for (const named_picture &picture : final_pictures) {
        if (picture.index == index) {
            snprintf(path.data(), path.size(), "%s", picture.path);
            return true;
        }
    }
    return false;
}

struct built_in_picture {
    const uint8_t *pixels;
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
};

constexpr std::array<built_in_picture, 4> built_in_pictures = {{
    {updating_bmp.data(), 60, 44, 174, 39},
    {update_now_bmp.data(), 10, 29, 275, 68},
    {update_success_bmp.data(), 24, 44, 247, 38},
    {update_failed_bmp.data(), 37, 44, 221, 39},
}};

} // namespace

int32_t spi_write_cmds(int32_t fd, const uint8_t *bytes, uint32_t length) {
    if (!spidev_can_send(fd, bytes, spidev_level::command)) {
        return -1;
    }
    spidev_select(fd, spidev_level::command);
    const int32_t result = spidev_transfer(fd, bytes, length, s_uSpeed, s_uiDelay, s_ucBits);
    if (result < 0) {
        puts("spi_write_cmd: ioctl command error!");
    }
    return result;
}

int32_t spi_write_data(int32_t fd, const uint8_t *bytes, uint32_t length) {
    if (!spidev_can_send(fd, bytes, spidev_level::data)) {
        return -1;
    }
    spidev_select(fd, spidev_level::data);
    return send_data(fd, bytes, length);
}

int32_t spi_write_big_data(int32_t fd, const uint8_t *bytes, int32_t length) {
    if (!spidev_can_send(fd, bytes, spidev_level::data)) {
        return -1;
    }
    spidev_select(fd, spidev_level::data);
    int32_t result = 0;
    for (int32_t sent = 0; sent < length;) {
        const int32_t size = std::min(length - sent, longest_transfer);
        result = send_data(fd, bytes + sent, static_cast<uint32_t>(size));
        sent += size;
    }
    return result;
}

int32_t sa1230_write_cmd(int32_t fd, uint8_t command) {
    return spi_write_cmds(fd, &command, 1);
}

int32_t sa1230_write_data(int32_t fd, uint8_t data) {
    return spi_write_data(fd, &data, 1);
}

int32_t sa1230_init_simple(int32_t fd) {
    for (const line_switch &step : power_up) {
        shell(step.command);
        usleep(step.wait_us);
    }
    for (const start_up_command &step : start_up) {
        sa1230_write_cmd(fd, step.command);
        for (uint8_t i = 0; i < step.data_count; ++i) {
            sa1230_write_data(fd, step.data[i]);
        }
        if (step.wait_us > 0) {
            usleep(step.wait_us);
        }
    }
    return 0;
}

int32_t sa1230_open(const char *path) {
    const int32_t fd = open(path, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        printf("spi_oled__open: %s error!\n", path);
        return -1;
    }
    spidev_configure(fd, s_ucMode, s_ucBits, s_uSpeed);
    sa1230_init_simple(fd);
    return fd;
}

int32_t sa1230_set_show_window(int32_t fd, uint16_t start_column, uint16_t end_column,
                               uint16_t start_row, uint16_t end_row) {
    write_range(fd, set_column_address, start_column, end_column);
    write_range(fd, set_page_address, start_row, end_row);
    return 0;
}

int32_t sa1230_write_ram_prepare(int32_t fd) {
    sa1230_write_cmd(fd, write_memory_start);
    return 0;
}

int32_t sa1230_show_layer(int32_t fd, sa1230_layer layer) {
    if (layer.data == nullptr || layer.width <= 0 || layer.height <= 0) {
        puts("input err");
        return -1;
    }
    if (out.data == nullptr) {
        out.data = static_cast<uint8_t *>(malloc(sa1230_frame_size));
    }
    if (out.data == nullptr) {
        return -1;
    }
    if (layer.width > sa1230_surface_width || layer.height > sa1230_surface_height) {
        puts("out of range");
        return -1;
    }
    change_layer_direction(&layer, &out, sa1230_pixel_size);
    if (fd < 0) {
        return -1;
    }
    sa1230_set_show_window(fd, 0, static_cast<uint16_t>(out.width - 1), 0,
                           static_cast<uint16_t>(out.height - 1));
    sa1230_write_ram_prepare(fd);
    spi_write_big_data(fd, out.data, out.width * out.height * sa1230_pixel_size);
    return 0;
}

int32_t sa1230_update(int32_t fd, int32_t index) {
    picture_path path;
    if (!find_picture(index, path)) {
        debug(1, "bmp name error!\n");
        return -1;
    }
    int width = 0;
    int height = 0;
    const owned_memory<uint8_t> pixels = read_bmp_rgb565(path.data(), &width, &height);
    if (pixels == nullptr) {
        return -1;
    }
    return sa1230_show_layer(fd, {pixels.get(), 0, 0, width, height});
}

int32_t sa1230_default(int32_t fd, uint32_t number) {
    if (number >= built_in_pictures.size()) {
        printf("%d is out range\n", static_cast<int>(number));
        return 0;
    }
    const owned_memory<uint8_t> screen(static_cast<uint8_t *>(calloc(sa1230_frame_size, 1)));
    if (screen == nullptr) {
        return -1;
    }
    const sa1230_layer layer = {screen.get(), 0, 0, sa1230_surface_width, sa1230_surface_height};
    const built_in_picture &picture = built_in_pictures[number];
    // An element is only read.
    const sa1230_layer element = {const_cast<uint8_t *>(picture.pixels), picture.x, picture.y,
                                  picture.width, picture.height};
    add_element_to_layer(&layer, &element);
    sa1230_show_layer(fd, layer);
    return 0;
}

} // namespace renewer
