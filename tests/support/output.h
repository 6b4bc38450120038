#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

// Captures standard output during its lifetime and calls a listener with each line as it is
// printed.
class output_listener {
public:
    using line_listener = std::function<void(std::string_view line)>;

    explicit output_listener(line_listener each_line = {}) : on_line(std::move(each_line)) {
        cookie_io_functions_t functions = {};
        functions.write = [](void *listener, const char *part, size_t size) {
            static_cast<output_listener *>(listener)->take({part, size});
            return static_cast<ssize_t>(size);
        };
        text.reserve(4096); // no allocation while a test lets memory run out
        fflush(stdout);
        stdout = fopencookie(this, "w", functions);
        setvbuf(stdout, nullptr, _IONBF, 0);
    }
    output_listener(const output_listener &) = delete;
    output_listener &operator=(const output_listener &) = delete;
    ~output_listener() { fclose(std::exchange(stdout, before)); }

    std::string text;

private:
    void take(std::string_view part) {
        for (const char c : part) {
            text += c;
            if (c == '\n' && on_line) {
                on_line(std::string_view(text).substr(line_start));
            }
            line_start = c == '\n' ? text.size() : line_start;
        }
    }

    line_listener on_line;
    size_t line_start = 0;
    FILE *before = stdout;
};
