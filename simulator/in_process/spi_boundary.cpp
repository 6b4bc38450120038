#include "simulator/in_process/spi_boundary.h"

#include "simulator/boundary/spi_requests.h"
#include "simulator/in_process/asked.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace fs = std::filesystem;

static const fs::path panel_lines[] = {"/sys/class/leds/Oled_Power/brightness",
                                       "/sys/class/leds/Oled_Rst/brightness"};

spi_boundary &spi() {
    static spi_boundary the_link;
    return the_link;
}

void spi_boundary::forget() {
    asked().transcript.clear();
    pixels.clear();
    transfers = 0;
}

void spi_boundary::take_lines_of_panel() {
    for (const fs::path &line : panel_lines) {
        std::ifstream file(line);
        if (std::string value; file >> value) {
            panel.led(line.parent_path().filename().string() + " " + value);
        }
    }
}

void put_lcd(const fs::path &node) {
    for (const fs::path &file : {node, panel_lines[0], panel_lines[1]}) {
        fs::create_directories(file.parent_path());
        std::ofstream{file};
    }
}

namespace {

void note(const std::string &line) {
    asked().transcript += line + "\n";
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

// Takes the place of the C library's for the whole test program.
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
