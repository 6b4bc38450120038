#include "prompt/led.h"

#include "platform/owner.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace renewer {

namespace {

struct led_switch {
    std::string_view value;
    const char *open_failed;
    const char *write_failed;
};

constexpr led_switch on = {"255", "led dev open failed", "led write 255 fialed! "};
constexpr led_switch off = {"0", "led dev  open failed", "led write 0 fialed! "};

owned_descriptor open_led(const char *name) {
    char path[64];
    const int length = snprintf(path, sizeof(path), "/sys/class/leds/%s/brightness", name);
    if (length < 0 || static_cast<size_t>(length) >= sizeof(path)) {
        errno = ENAMETOOLONG;
        return owned_descriptor();
    }
    return owned_descriptor(open(path, O_WRONLY | O_CLOEXEC));
}

bool write_value(owned_descriptor file, std::string_view value) {
    return write(file.get(), value.data(), value.size()) == static_cast<ssize_t>(value.size());
}

int switch_led(const char *name, const led_switch &to) {
    owned_descriptor file = open_led(name);
    if (!file) {
        perror("open");
        puts(to.open_failed);
        return -1;
    }
    if (!write_value(std::move(file), to.value)) {
        puts(to.write_failed);
        return -1;
    }
    return 0;
}

} // namespace

int led_on_by_name(const char *name) {
    return switch_led(name, on);
}

int led_off_by_name(const char *name) {
    return switch_led(name, off);
}

} // namespace renewer
