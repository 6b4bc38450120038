#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

// Takes what is printed on standard output while it lives, and tells of each line at the moment at
// which it is printed.
class output_listener {
public:
    using line_listener = std::function<void(std::string_view line)>;

    explicit output_listener(line_listener each_line = {}) : tell(std::move(each_line)) {
        cookie_io_functions_t functions = {};
        functions.write = [](void *listener, const char *part, size_t size) {
            static_cast<output_listener *>(listener)->take({part, size});
            return static_cast<ssize_t>(size);
        };
        text.reserve(4096); // nothing is allocated while a test lets memory run out
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
            if (c == '\n' && tell) {
                tell(std::string_view(text).substr(line_start));
            }
            line_start = c == '\n' ? text.size() : line_start;
        }
    }

    line_listener tell;
    size_t line_start = 0;
    FILE *before = stdout;
};
