#pragma once

#include <csignal>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>

// A file without seeking: content that comes through a pipe, once, in pieces.
class piped {
public:
    explicit piped(std::string_view content) {
        signal(SIGPIPE, SIG_IGN); // a reader may end early
        int ends[2] = {-1, -1};
        [[maybe_unused]] const int made = pipe(ends);
        reader = ends[0];
        path = "/proc/self/fd/" + std::to_string(reader);
        writer = std::thread([content = std::string(content), end = ends[1]] {
            const size_t half = content.size() / 2;
            [[maybe_unused]] ssize_t done = write(end, content.data(), half);
            usleep(1000);
            done = write(end, content.data() + half, content.size() - half);
            close(end);
        });
    }
    piped(const piped &) = delete;
    piped &operator=(const piped &) = delete;
    ~piped() {
        close(reader);
        writer.join();
    }

    std::string path;

private:
    int reader = -1;
    std::thread writer;
};
