#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <linux/spi/spidev.h>

// Answers the ioctl requests to an SPI device node. Used by the boundary of a unit and by the one
// within a test's own process.
namespace boundary {

// The unit's SPI driver takes these two spidev requests, with a plain integer as argument, as the
// setting of the panel's data/command line.
constexpr unsigned long set_command_level = 0x80046B05;
constexpr unsigned long set_data_level = 0x40046B05;
static_assert(set_command_level == SPI_IOC_RD_MODE32 && set_data_level == SPI_IOC_WR_MODE32);

struct spi_settings {
    uint8_t mode = 0;
    uint8_t bits_per_word = 8;
    uint32_t speed_hz = 1'000'000;
};

template <typename link, typename T>
int exchange_setting(link &to, const char *name, bool set, T &kept, void *place, T highest) {
    T &asked = *static_cast<T *>(place);
    to.exchanged(set ? "set" : "get", name, set ? asked : kept);
    if (set) {
        kept = std::min(asked, highest);
    } else {
        asked = kept;
    }
    return 0;
}

// Answers a request to the link `to`, which has its `settings`, the `highest_speed` that it
// accepts, and
//   level(int level, int argument)               for the data/command line,
//   transfer(const spi_ioc_transfer &)           for a message; returns the request's result, and
//   exchanged(const char *how, const char *setting, uint32_t value).
template <typename link>
int answer_spi_request(link &to, unsigned long request, void *argument) {
    const bool set = _IOC_DIR(request) == _IOC_WRITE;
    switch (request) {
    case set_command_level:
    case set_data_level:
        to.level(request == set_data_level ? 1 : 0,
                 static_cast<int>(reinterpret_cast<uintptr_t>(argument)));
        return 0;
    case SPI_IOC_WR_MODE:
    case SPI_IOC_RD_MODE:
        return exchange_setting(to, "mode", set, to.settings.mode, argument, uint8_t{UINT8_MAX});
    case SPI_IOC_WR_BITS_PER_WORD:
    case SPI_IOC_RD_BITS_PER_WORD:
        return exchange_setting(to, "bits", set, to.settings.bits_per_word, argument,
                                uint8_t{UINT8_MAX});
    case SPI_IOC_WR_MAX_SPEED_HZ:
    case SPI_IOC_RD_MAX_SPEED_HZ:
        return exchange_setting(to, "speed", set, to.settings.speed_hz, argument, to.highest_speed);
    case SPI_IOC_MESSAGE(1):
        return to.transfer(*static_cast<const spi_ioc_transfer *>(argument));
    default:
        errno = ENOTTY;
        return -1;
    }
}

} // namespace boundary
