#include "progress.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace pack {

namespace {

using namespace std::chrono_literals;

constexpr auto patience = 1s;
constexpr auto refresh = 100ms;
constexpr size_t usual_columns = 80;
constexpr const char *clear_line = "\r\x1b[K"; // ECMA-48, erase in line

size_t terminal_columns() {
    struct winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usual_columns;
}

} // namespace

std::string progress_line(const std::string &title, uint64_t done, uint64_t total, size_t columns) {
    const uint64_t percent = total == 0 ? 100 : std::min<uint64_t>(done * 100 / total, 100);
    std::string number = std::to_string(percent) + " %";
    number.insert(0, 6 - std::min<size_t>(number.size(), 6), ' ');
    const size_t used = title.size() + number.size() + 4;
    if (used + 10 > columns) {
        return title.substr(0, columns > number.size() ? columns - number.size() : 0) + number;
    }
    const size_t width = columns - used;
    const size_t filled = width * static_cast<size_t>(percent) / 100;
    return title + " [" + std::string(filled, '#') + std::string(width - filled, ' ') + "]" +
           number;
}

progress_bar::progress_bar(std::string title, uint64_t total, std::function<uint64_t()> done) {
    if (isatty(STDERR_FILENO) == 1) {
        painter = std::thread([this, title = std::move(title), total, done = std::move(done)] {
            run(title, total, done);
        });
    }
}

progress_bar::~progress_bar() {
    if (!painter.joinable()) {
        return;
    }
    {
        const std::lock_guard held(lock);
        finished = true;
    }
    changed.notify_one();
    painter.join();
}

void progress_bar::run(const std::string &title, uint64_t total,
                       const std::function<uint64_t()> &done) {
    std::unique_lock held(lock);
    if (changed.wait_for(held, patience, [this] { return finished; })) {
        return;
    }
    do {
        fprintf(stderr, "\r%s",
                progress_line(title, done(), total, terminal_columns() - 1).c_str());
    } while (!changed.wait_for(held, refresh, [this] { return finished; }));
    fputs(clear_line, stderr);
}

} // namespace pack
