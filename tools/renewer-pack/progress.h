#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace pack {

// Shows on standard error how far a piece of work has come, when that is a terminal and the work
// takes longer than a second. Gone from the terminal with the end of the scope.
class progress_bar {
public:
    // `done` gives the bytes done of `total`; it is called from another thread.
    progress_bar(std::string title, uint64_t total, std::function<uint64_t()> done);
    ~progress_bar();
    progress_bar(const progress_bar &) = delete;
    progress_bar &operator=(const progress_bar &) = delete;

private:
    void run(const std::string &title, uint64_t total, const std::function<uint64_t()> &done);

    std::mutex lock;
    std::condition_variable changed;
    bool finished = false;
    std::thread painter; // only on a terminal
};

// The line that shows `done` of `total`, `columns` wide.
std::string progress_line(const std::string &title, uint64_t done, uint64_t total, size_t columns);

} // namespace pack
