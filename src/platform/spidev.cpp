#include "platform/spidev.h"

#include <cstdio>
#include <linux/spi/spidev.h>
#include <sys/ioctl.h>

namespace renewer {

namespace {

// The numbers of SPI_IOC_RD_MODE32 and SPI_IOC_WR_MODE32.
constexpr unsigned long select_command_request = 0x80046B05;
constexpr unsigned long select_data_request = 0x40046B05;
constexpr int command_argument = 0;
constexpr int data_argument = 1;

static_assert(SPI_IOC_MESSAGE(1) == 0x40206B00);
static_assert(sizeof(spi_ioc_transfer) == 32);

} // namespace

void spidev_configure(int fd, uint8_t &mode, uint8_t &bits_per_word, uint32_t &speed_hz) {
    // Errors are ignored: each transfer states speed and word size again, and a driver that refuses
    // a mode keeps its own.
    ioctl(fd, SPI_IOC_WR_MODE, &mode);
    ioctl(fd, SPI_IOC_RD_MODE, &mode);
    ioctl(fd, SPI_IOC_WR_BITS_PER_WORD, &bits_per_word);
    ioctl(fd, SPI_IOC_RD_BITS_PER_WORD, &bits_per_word);
    ioctl(fd, SPI_IOC_WR_MAX_SPEED_HZ, &speed_hz);
    ioctl(fd, SPI_IOC_RD_MAX_SPEED_HZ, &speed_hz);
}

bool spidev_can_send(int fd, const uint8_t *bytes, spidev_level level) {
    const bool command = level == spidev_level::command;
    if (fd < 0) {
        puts(command ? "spi_write_cmd: file descriptor error!"
                     : "spi_write_data: file descriptor error!");
        return false;
    }
    if (bytes == nullptr) {
        puts(command ? "spi_write_cdd: NULL pointer to command!"
                     : "spi_write_data: NULL pointer to command!");
        return false;
    }
    return true;
}

void spidev_select(int fd, spidev_level level) {
    if (level == spidev_level::command) {
        ioctl(fd, select_command_request, command_argument);
    } else {
        ioctl(fd, select_data_request, data_argument);
    }
}

int spidev_transfer(int fd, const uint8_t *bytes, uint32_t length, uint32_t speed_hz,
                    uint16_t delay_us, uint8_t bits_per_word) {
    spi_ioc_transfer transfer{};
    // The kernel's field has 64 bits, for 32-bit programs too.
    transfer.tx_buf = reinterpret_cast<uintptr_t>(bytes);
    transfer.len = length;
    transfer.speed_hz = speed_hz;
    transfer.delay_usecs = delay_us;
    transfer.bits_per_word = bits_per_word;
    return ioctl(fd, SPI_IOC_MESSAGE(1), &transfer);
}

} // namespace renewer
