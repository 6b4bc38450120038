// Questions about what a run left behind.

#include "simulator/unit/outcome.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>

namespace simulator {

namespace fs = std::filesystem;

namespace {

bool contains(const event &happened, std::string_view line) {
    return happened.line().find(line) != std::string::npos;
}

std::string printed(const std::vector<event> &events, event_kind kind) {
    std::string text;
    for (const event &happened : events) {
        if (happened.kind == kind) {
            text += happened.text;
        }
    }
    return text;
}

std::string_view kind_of(const fs::file_status &status) {
    switch (status.type()) {
    case fs::file_type::directory:
        return "directory";
    case fs::file_type::symlink:
        return "link";
    case fs::file_type::regular:
        return "file";
    default:
        return "special";
    }
}

} // namespace

std::string_view name_of(event_kind kind) {
    constexpr std::array<std::string_view, 13> names = {
        "out",  "err", "led",    "shell", "alarm", "signal", "sleep",
        "wait", "spi", "screen", "call",  "act",   "exit"};
    return names.at(static_cast<size_t>(kind));
}

std::string event::line() const {
    std::string shown(name_of(kind));
    shown += ' ';
    shown += text;
    while (shown.ends_with('\n')) {
        shown.pop_back();
    }
    return shown;
}

std::string outcome::transcript(std::initializer_list<event_kind> kinds) const {
    std::string lines;
    for (const event &happened : events) {
        if (kinds.size() == 0 || std::ranges::find(kinds, happened.kind) != kinds.end()) {
            lines += happened.line() + "\n";
        }
    }
    return lines;
}

std::string outcome::output() const {
    return printed(events, event_kind::out);
}

std::string outcome::errors() const {
    return printed(events, event_kind::err);
}

bool outcome::has(std::string_view line) const {
    return when(line).has_value();
}

int outcome::count(std::string_view line) const {
    return static_cast<int>(
        std::ranges::count_if(events, [&](const event &one) { return contains(one, line); }));
}

std::optional<unit_time> outcome::when(std::string_view line, int occurrence) const {
    for (const event &happened : events) {
        if (contains(happened, line) && --occurrence == 0) {
            return happened.at;
        }
    }
    return std::nullopt;
}

std::optional<std::string> outcome::file(std::string_view path) const {
    std::ifstream file(*tree / fs::path(path).relative_path(), std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

bool outcome::exists(std::string_view path) const {
    return fs::exists(fs::symlink_status(*tree / fs::path(path).relative_path()));
}

std::string outcome::listing(std::string_view path) const {
    std::vector<std::string> lines;
    const fs::path base = *tree / fs::path(path).relative_path();
    for (const auto &entry : fs::recursive_directory_iterator(base)) {
        std::string line = entry.path().lexically_relative(base).string();
        line += ' ';
        line += kind_of(entry.symlink_status());
        if (fs::is_regular_file(entry.symlink_status())) {
            line += ' ' + std::to_string(entry.file_size());
        }
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    std::string text;
    for (const std::string &line : lines) {
        text += line + "\n";
    }
    return text;
}

} // namespace simulator
