#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace pack {

// Selects how progress is shown on standard error: "auto", a bar if it is a terminal and the work
// takes longer than a second; "json", a line of JSON ten times a second and one at the end; "none".
void set_progress(const std::string &mode);

// Shows no bar in mode "auto"; a mode that was selected with `set_progress` still applies.
void hide_progress();

// Shows the progress of some work until the end of the scope, where the bar is cleared.
class progress_bar {
public:
    // `done` returns how many of the `total` bytes are done; it is called from another thread.
    progress_bar(std::string title, uint64_t total, std::function<uint64_t()> done);
    ~progress_bar();
    progress_bar(const progress_bar &) = delete;
    progress_bar &operator=(const progress_bar &) = delete;

private:
    bool is_finished_after(std::chrono::milliseconds time);
    void draw(const std::string &title, uint64_t total, const std::function<uint64_t()> &done);
    void print(const std::string &title, uint64_t total, const std::function<uint64_t()> &done);

    std::mutex lock;
    std::condition_variable changed;
    bool finished = false;
    std::thread painter; // only if something is shown
};

// A line of `columns` characters that shows `done` of `total`.
std::string progress_line(const std::string &title, uint64_t done, uint64_t total, size_t columns);

} // namespace pack
