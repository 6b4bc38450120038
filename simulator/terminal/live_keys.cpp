#include "simulator/terminal/live_keys.h"

#include <array>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <unistd.h>

namespace simulator {

namespace {

constexpr auto hold = std::chrono::milliseconds(80); // of the desk's clock

struct key_bytes {
    std::string_view bytes; // as a terminal sends them (ECMA-48; with "O" in application mode)
    key which;
};

constexpr key_bytes known[] = {
    {"\033[A", key::up},    {"\033[B", key::down},
    {"\033[C", key::right}, {"\033[D", key::left},
    {"\033OA", key::up},    {"\033OB", key::down},
    {"\033OC", key::right}, {"\033OD", key::left},
    {"\r", key::ok},        {"\n", key::ok},
    {"p", key::power},      {"\033", key::esc}, // after the sequences that begin with it
};

} // namespace

live_keys::live_keys(live_hand &acting, key power) : hand(acting), power_key(power) {
    std::array<int, 2> ends;
    if (isatty(STDIN_FILENO) == 0 || tcgetpgrp(STDIN_FILENO) != getpgrp() ||
        tcgetattr(STDIN_FILENO, &before) != 0 || pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    end_awaited.reset(ends[0]);
    end_request.reset(ends[1]);
    termios raw = before;
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    raw.c_cc[VSUSP] = _POSIX_VDISABLE; // Ctrl-Z would leave the terminal in this mode
    tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
    reader = std::thread([this] { read_keys(); });
}

live_keys::~live_keys() {
    if (!reads_keys()) {
        return;
    }
    end_request.reset();
    reader.join();
    tcsetattr(STDIN_FILENO, TCSADRAIN, &before);
}

void live_keys::press(key which) {
    hand.press(which);
    std::this_thread::sleep_for(hold);
    hand.release(which);
}

void live_keys::read_keys() {
    for (;;) {
        pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {end_awaited.get(), POLLIN, 0}};
        poll(sources, 2, -1);
        std::array<char, 64> bytes;
        const ssize_t size =
            sources[1].revents != 0 ? 0 : read(STDIN_FILENO, bytes.data(), bytes.size());
        if (size <= 0) {
            return;
        }
        std::string_view rest(bytes.data(), static_cast<size_t>(size));
        while (!rest.empty()) {
            size_t used = 1;
            for (const key_bytes &one : known) {
                if (rest.starts_with(one.bytes)) {
                    used = one.bytes.size();
                    press(one.which == key::power ? power_key : one.which);
                    break;
                }
            }
            rest.remove_prefix(used);
        }
    }
}

} // namespace simulator
