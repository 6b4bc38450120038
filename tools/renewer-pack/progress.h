#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace pack {

// How progress is shown on standard error: "auto", a bar when it is a terminal and the work takes
// longer than a second; "json", a line of JSON ten times a second and one at the end; "none".
void set_progress(const std::string &mode);

// Shows no bar; what was asked for with `set_progress` is shown all the same.
void hide_progress();

// Shows how far a piece of work has come while it lives. A bar is gone from the terminal with the
// end of the scope.
class progress_bar {
public:
    // `done` gives the bytes done of `total`; it is called from another thread.
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
    std::thread painter; // only when something is to be shown
};

// The line that shows `done` of `total`, `columns` wide.
std::string progress_line(const std::string &title, uint64_t done, uint64_t total, size_t columns);

} // namespace pack
