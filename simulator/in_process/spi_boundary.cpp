#include "simulator/in_process/spi_boundary.h"

#include "simulator/boundary/spi_requests.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <unistd.h>

spi_boundary &spi() {
    static spi_boundary the_link;
    return the_link;
}

void spi_boundary::forget() {
    transcript.clear();
    pixels.clear();
    transfers = 0;
}

namespace {

void note(const std::string &line) {
    spi().transcript += line + "\n";
}

int send(const spi_ioc_transfer &transfer) {
    ++spi().transfers;
    spi_ioc_transfer expected{};
    expected.tx_buf = transfer.tx_buf;
    expected.len = transfer.len;
    expected.speed_hz = std::min(spi().wanted_speed, spi().highest_speed);
    expected.bits_per_word = 8;
    if (memcmp(&transfer, &expected, sizeof(expected)) != 0) {
        note("wrong settings of the transfer");
    }
    if (spi().failing.contains(spi().transfers)) {
        note("failed transfer of " + std::to_string(transfer.len));
        errno = EIO;
        return -1;
    }
    const auto *bytes = reinterpret_cast<const uint8_t *>(static_cast<uintptr_t>(transfer.tx_buf));
    const std::span sent(bytes, transfer.len);
    const std::string line =
        spi().leads_to_oled ? spi().oled.transfer(sent) : spi().panel.transfer(sent);
    note(line);
    if (line.starts_with("pixels")) {
        spi().pixels.append(bytes, bytes + transfer.len);
    } else {
        spi().pixels.clear();
    }
    return static_cast<int>(transfer.len);
}

struct spi_link {
    uint32_t highest_speed = spi().highest_speed;
    static inline boundary::spi_settings settings;

    void level(int level, int argument) const {
        if (argument != level) {
            note("wrong level argument " + std::to_string(argument));
        }
        note(level == 0 ? "command level" : "data level");
        spi().leads_to_oled ? spi().oled.level(argument) : spi().panel.level(argument);
    }
    int transfer(const spi_ioc_transfer &asked) const { return send(asked); }
    void exchanged(const char *how, const char *setting, uint32_t value) const {
        note(std::string(how) + " " + setting + " " + std::to_string(value));
    }
};

} // namespace

// These take the place of the C library's for the whole test program.

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (_IOC_TYPE(request) != SPI_IOC_MAGIC) {
        return static_cast<int>(syscall(SYS_ioctl, fd, request, argument));
    }
    spi_link link;
    return boundary::answer_spi_request(link, request, argument);
}

extern "C" int system(const char *command) {
    note("shell " + std::string(command));
    int value = 0;
    char line[32];
    if (sscanf(command, "echo %d > /sys/class/leds/%31[^/]/brightness", &value, line) != 2) {
        return 1;
    }
    if (std::string(line) == "Oled_Power") {
        spi().panel.power(value != 0);
    } else if (std::string(line) == "Oled_Rst") {
        spi().panel.reset(value != 0);
    }
    return 0;
}

extern "C" int usleep(useconds_t time) {
    note("wait " + std::to_string(time) + " us");
    return 0;
}

extern "C" unsigned sleep(unsigned seconds) {
    if (spi().before_sleep) {
        spi().before_sleep();
    }
    note("sleep " + std::to_string(seconds) + " s");
    return 0;
}

// The time passes at once when nothing is to be read.
extern "C" int select(int count, fd_set *readable, fd_set *, fd_set *, timeval *time_out) {
    char text[64];
    snprintf(text, sizeof(text), "select %ld.%06ld s", static_cast<long>(time_out->tv_sec),
             static_cast<long>(time_out->tv_usec));
    note(text);
    for (int fd = 0; fd < count; ++fd) {
        pollfd one = {fd, POLLIN, 0};
        if (FD_ISSET(fd, readable) && poll(&one, 1, 0) == 1) {
            return 1;
        }
    }
    *time_out = {};
    return 0;
}
