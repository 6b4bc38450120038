// LED files that behave as in sysfs, and SPI device nodes.

#include "simulator/boundary/disk.h"
#include "simulator/boundary/process.h"
#include "simulator/boundary/spi_requests.h"

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace boundary;

namespace {

// The name of the LED whose brightness file this is, terminated within `path`; null for other
// files.
const char *led_of(char (&path)[256]) {
    constexpr char directory[] = "/sys/class/leds/";
    if (strncmp(path, directory, strlen(directory)) != 0) {
        return nullptr;
    }
    char *name = path + strlen(directory);
    char *file = strchr(name, '/');
    if (file == nullptr || strcmp(file, "/brightness") != 0) {
        return nullptr;
    }
    *file = '\0';
    return name;
}

// An SPI device node is a plain file in the unit's tree; the panel behind it is part of the desk.

unsigned long spi_transfers = 0;

bool is_spi_node(const char *path) {
    return strncmp(path, "/dev/spidev", strlen("/dev/spidev")) == 0;
}

int spi_transfer(const char *node, const spi_ioc_transfer &transfer) {
    if (spi_transfers++ >= spi_transfers_that_work) {
        errno = EIO;
        return -1;
    }
    char name[300];
    const auto name_size = static_cast<size_t>(snprintf(name, sizeof(name), "transfer %s ", node));
    char *record = static_cast<char *>(malloc(name_size + transfer.len));
    if (record == nullptr) {
        errno = ENOMEM;
        return -1;
    }
    memcpy(record, name, name_size);
    memcpy(record + name_size,
           reinterpret_cast<const void *>(static_cast<uintptr_t>(transfer.tx_buf)), transfer.len);
    send_record(record, name_size + transfer.len);
    free(record);
    return static_cast<int>(transfer.len);
}

// The SPI link behind a node. Its settings are kept when the node is opened again.
struct spi_link {
    const char *node;
    uint32_t highest_speed = UINT32_MAX;
    static inline spi_settings settings;

    void level(int, int argument) const { report("level %s %d", node, argument); }
    int transfer(const spi_ioc_transfer &asked) const { return spi_transfer(node, asked); }
    void exchanged(const char *, const char *, uint32_t) const {}
};

} // namespace

extern "C" {

int ioctl(int descriptor, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    const unsigned long argument = va_arg(arguments, unsigned long);
    va_end(arguments);
    // Some callers sign-extend the request number to 64 bits.
    const unsigned long number = request & 0xFFFFFFFFul;
    char path[256];
    descriptor_path(descriptor, path);
    if (is_spi_node(path)) {
        spi_link link = {path};
        return answer_spi_request(link, number, reinterpret_cast<void *>(argument));
    }
    return next<decltype(ioctl)>("ioctl")(descriptor, request, argument);
}

ssize_t write(int descriptor, const void *bytes, size_t count) {
    const auto real = next<decltype(write)>("write");
    char path[256];
    descriptor_path(descriptor, path);
    if (path[0] == '/' && disk_is_full(path)) {
        errno = ENOSPC;
        return -1;
    }
    const char *led = led_of(path);
    if (led == nullptr) {
        return real(descriptor, bytes, count);
    }
    // A sysfs attribute takes each write as a whole new value, with or without a newline.
    const char *text = static_cast<const char *>(bytes);
    const void *line_end = memchr(text, '\n', count);
    const size_t shown = line_end == nullptr
                             ? count
                             : static_cast<size_t>(static_cast<const char *>(line_end) - text);
    report("led %s %.*s", led, static_cast<int>(shown), text);
    if (ftruncate(descriptor, 0) != 0) {
        return -1;
    }
    lseek(descriptor, 0, SEEK_SET);
    return real(descriptor, bytes, count);
}

} // extern "C"
