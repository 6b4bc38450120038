#include "simulator/unit/observation.h"

#include "simulator/boundary/protocol.h"
#include "simulator/unit/live.h"

#include <algorithm>
#include <cstring>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// Planned key events are stamped with their planned time, not the actual one, so that the program
// prints the same in every run.
constexpr unit_time first_key_time = 1000s;

constexpr int longest_desk_wait_ms = 5;

// The event kind of this name; nothing if there is none.
std::optional<event_kind> kind_named(std::string_view name) {
    for (int kind = 0; kind <= static_cast<int>(event_kind::exit); ++kind) {
        if (name_of(static_cast<event_kind>(kind)) == name) {
            return static_cast<event_kind>(kind);
        }
    }
    return std::nullopt;
}

// Splits the text at its first blank.
std::pair<std::string_view, std::string_view> first_word(std::string_view text) {
    const size_t blank = text.find(' ');
    return {text.substr(0, blank),
            blank == std::string_view::npos ? std::string_view() : text.substr(blank + 1)};
}

} // namespace

observation::observation(const unit_plan &unit_plan, const running_unit &unit)
    : plan(unit_plan), start(std::chrono::steady_clock::now()), acting(unit) {
    for (const planned_action &one : plan.actions) {
        schedule.push_back({&one, 0, {}, false});
        if (one.when.line.empty()) {
            schedule.back().due = one.when.delay;
        }
    }
}

unit_time observation::now() const {
    const auto desk = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<unit_time>(desk * plan.clock_speed);
}

void observation::note(event_kind kind, std::string text, bool background) {
    const event happened = {now(), kind, std::move(text), background};
    result.events.push_back(happened);
    if (plan.watcher) {
        plan.watcher(happened);
    }
    set_due(happened);
}

void observation::set_due(const event &happened) {
    const std::string line = happened.line();
    for (scheduled &one : schedule) {
        if (!one.due && line.find(one.what->when.line) != std::string::npos &&
            ++one.occurrences_seen == one.what->when.occurrence) {
            one.due = happened.at + one.what->when.delay;
        }
    }
}

void observation::note_printed(event_kind kind, std::string_view text) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const size_t length = end == std::string_view::npos ? text.size() : end + 1;
        note(kind, std::string(text.substr(0, length)));
        text.remove_prefix(length);
    }
}

void observation::note_record(std::string_view record) {
    const bool background = record.starts_with(thread_mark);
    if (background) {
        record.remove_prefix(strlen(thread_mark));
    }
    const auto [name, rest] = first_word(record);
    const std::string text(rest);
    if (name == "memory") {
        result.peak_memory_kib = std::stol(text);
    } else if (name == "level") {
        const auto [node, number] = first_word(rest);
        take_level(node, number);
    } else if (name == "transfer") {
        const auto [node, bytes] = first_word(rest);
        take_transfer(node, bytes);
    } else if (name == "ended") {
        take_command_end(rest);
    } else if (const auto kind = kind_named(name)) {
        note(*kind, text, background);
        if (*kind == event_kind::led) {
            result.panel.led(text);
        }
    }
}

void observation::take_command_end(std::string_view command) {
    for (size_t number = result.events.size(); number-- > 0;) {
        const event &begun = result.events[number];
        if (begun.kind == event_kind::shell && begun.text == command &&
            !result.durations.contains(number)) {
            result.durations[number] = now() - begun.at;
            return;
        }
    }
}

void observation::take_level(std::string_view node, std::string_view number) {
    const int level = number == "0" ? 0 : 1;
    if (node == lcd_node) {
        result.panel.level(level);
    } else if (node == oled_node) {
        result.oled.level(level);
    }
}

void observation::take_transfer(std::string_view node, std::string_view bytes) {
    if (node == lcd_node) {
        take_transfer_of(result.panel, bytes);
    } else if (node == oled_node) {
        take_transfer_of(result.oled, bytes);
    }
}

template <typename panel_model>
void observation::take_transfer_of(panel_model &panel, std::string_view bytes) {
    const auto *begin = reinterpret_cast<const uint8_t *>(bytes.data());
    const int pictures_before = panel.pictures();
    note(event_kind::spi, panel.transfer({begin, bytes.size()}));
    if (panel.pictures() != pictures_before) {
        take_picture(panel.seen());
    }
}

void observation::take_picture(const picture &seen) {
    if (!result.pictures.empty() && result.pictures.back() == seen) {
        return;
    }
    result.pictures.push_back(seen);
    note(event_kind::screen, "picture " + std::to_string(result.pictures.size() - 1));
    if (plan.screen_watcher) {
        plan.screen_watcher(seen);
    }
}

void observation::act() {
    if (!end_marker_seen && fs::exists(below(acting.root, end_marker))) {
        end_marker_seen = true;
        note(event_kind::act, std::string("found ") + end_marker);
    }
    for (scheduled &one : schedule) {
        if (one.due && !one.done && *one.due <= now()) {
            one.done = true;
            perform(*one.what, one.what->when.delay);
        }
    }
    if (plan.hand != nullptr) {
        for (const planned_action &one : plan.hand->take()) {
            perform(one, now());
        }
    }
}

void observation::perform(const planned_action &what, unit_time key_time) {
    note(event_kind::act, what.name);
    acting.key_time = first_key_time + key_time;
    what.action(acting);
}

int observation::desk_wait() const {
    unit_time next = 1h;
    for (const scheduled &one : schedule) {
        if (one.due && !one.done) {
            next = std::min(next, *one.due - now());
        }
    }
    const double desk = static_cast<double>(next.count()) / plan.clock_speed;
    return std::clamp(static_cast<int>(desk) + 1, 0, longest_desk_wait_ms);
}

} // namespace simulator
