#include "progress.h"

#include "json_output.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace pack {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds patience = 1s;
constexpr std::chrono::milliseconds refresh = 100ms;
constexpr size_t usual_columns = 80;
constexpr const char *clear_line = "\r\x1b[K"; // ECMA-48, erase in line

std::string s_mode = "auto";

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

void set_progress(const std::string &mode) {
    s_mode = mode;
}

void hide_progress() {
    if (s_mode == "auto") {
        s_mode = "none";
    }
}

progress_bar::progress_bar(std::string title, uint64_t total, std::function<uint64_t()> done) {
    const bool as_json = s_mode == "json";
    if (as_json || (s_mode == "auto" && isatty(STDERR_FILENO) == 1)) {
        const auto show = as_json ? &progress_bar::print : &progress_bar::draw;
        painter = std::thread(show, this, std::move(title), total, std::move(done));
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

bool progress_bar::is_finished_after(std::chrono::milliseconds time) {
    std::unique_lock held(lock);
    return changed.wait_for(held, time, [this] { return finished; });
}

void progress_bar::draw(const std::string &title, uint64_t total,
                        const std::function<uint64_t()> &done) {
    if (is_finished_after(patience)) {
        return;
    }
    do {
        fprintf(stderr, "\r%s",
                progress_line(title, done(), total, terminal_columns() - 1).c_str());
    } while (!is_finished_after(refresh));
    fputs(clear_line, stderr);
}

void progress_bar::print(const std::string &title, uint64_t total,
                         const std::function<uint64_t()> &done) {
    bool last = false;
    do {
        last = is_finished_after(refresh);
        const json line = {{"work", title}, {"done", std::min(done(), total)}, {"total", total}};
        fprintf(stderr, "%s\n", line.dump(-1, ' ', false, json::error_handler_t::replace).c_str());
    } while (!last);
}

} // namespace pack
