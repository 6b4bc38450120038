#include "simulator/panel_page/session.h"

#include "simulator/desk/label.h"
#include "simulator/desk/package_offer.h"
#include "simulator/desk/verdict.h"
#include "simulator/unit/description.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

namespace simulator {

namespace {

using nlohmann::json;

struct known_supply {
    std::string_view name;
    supply_file (*measured)(double volts);
};

constexpr std::array<known_supply, 3> supplies = {
    {{"battery", battery_at}, {"external", external_at}, {"type_c", type_c_at}}};
constexpr double most_volts = 30;

constexpr const char not_running[] = "The unit is not running.";

// The supply of this name; null if there is none.
const known_supply *supply_named(std::string_view name) {
    const auto found = std::ranges::find(supplies, name, &known_supply::name);
    return found == supplies.end() ? nullptr : &*found;
}

picture dark_screen(const std::string &model) {
    return model == "oled" ? ssd1327_panel().seen() : sa1230_panel().seen();
}

bool is_shown(event_kind kind) {
    return kind != event_kind::led && kind != event_kind::spi && kind != event_kind::screen;
}

json as_line(const event &happened) {
    const std::string line = happened.line();
    return {{"at", happened.at.count()},
            {"kind", name_of(happened.kind)},
            {"label", label_of(happened.kind)},
            {"text", line.substr(line.find(' ') + 1)}};
}

std::string as_news(const char *kind, const json &data) {
    return std::string("event: ") + kind +
           "\ndata: " + data.dump(-1, ' ', false, json::error_handler_t::replace) + "\n\n";
}

} // namespace

panel_session::panel_session(panel_subject shown)
    : subject(std::move(shown)), now_seen(dark_screen(subject.model)) {}

panel_session::~panel_session() {
    close();
    const std::lock_guard lock(starting);
    end_run();
}

void panel_session::end_run() {
    stop = true;
    if (runner.joinable()) {
        runner.join();
    }
    stop = false;
}

void panel_session::start(bool on_what_is_left) {
    end_run();
    const std::lock_guard lock(guard);
    ++run_number;
    ++state_number;
    events.clear();
    reading = {};
    lit.clear();
    held.clear();
    end_marker_stands = false;
    now_seen = dark_screen(subject.model);
    ++picture_number;
    phase = "running";
    hand = std::make_unique<live_hand>();
    runner =
        std::thread([this, on_what_is_left, &acting = *hand] { run(acting, on_what_is_left); });
    changed.notify_all();
}

void panel_session::start_with(const std::filesystem::path &package) {
    const std::lock_guard lock(starting);
    end_run();
    {
        const std::lock_guard also(guard);
        subject.package = package;
    }
    start();
}

void panel_session::run(live_hand &acting, bool on_what_is_left) {
    try {
        prepared_run ready = subject.prepare(subject.package);
        {
            const std::lock_guard lock(guard);
            for (const known_supply &one : supplies) {
                ready.described.supply(one.measured(subject.volts[std::string(one.name)]));
            }
            ready.described.supply(usb_mode_of(subject.usb_mode));
        }
        if (on_what_is_left && left.tree) {
            ready.described.started_on(left);
        }
        const outcome end = ready.described.clock_speed(subject.clock_speed)
                                .patience(std::chrono::hours(24))
                                .stop_when(stop)
                                .in_hand(acting)
                                .watch([this](const event &happened) { take(happened); })
                                .watch_screen([this](const picture &seen) { take(seen); })
                                .run(ready.arguments);
        left.tree = end.power_cut ? end.tree : nullptr;
        if (end.power_cut) {
            finish("cut",
                   "The power was cut while " + std::string(words_of(reading.reached)) + ".");
        } else if (subject.model == "oled") {
            finish("ended", "The example has ended.");
        } else {
            finish("ended", verdict_of(end).line());
        }
    } catch (const package_refused &refusal) {
        finish("ended", refused_package(refusal.what()).line());
    } catch (const std::exception &trouble) {
        finish("ended", std::string("The run could not be made: ") + trouble.what());
    }
}

void panel_session::finish(const std::string &how, const std::string &words) {
    const std::lock_guard lock(guard);
    hand.reset();
    phase = how;
    end_text = words;
    held.clear();
    end_marker_stands = false;
    if (phase == "cut") {
        lit.clear();
        now_seen = dark_screen(subject.model);
        ++picture_number;
    }
    ++state_number;
    changed.notify_all();
}

void panel_session::take(const event &happened) {
    const std::lock_guard lock(guard);
    if (is_shown(happened.kind)) {
        events.push_back(happened);
    }
    if (happened.kind == event_kind::led) {
        const size_t blank = happened.text.find(' ');
        const std::string name = happened.text.substr(0, blank);
        happened.text.ends_with(" 0") ? void(lit.erase(name)) : void(lit.insert(name));
    } else if (happened.kind == event_kind::shell) {
        read_command(reading, happened.text);
    } else if (happened.kind == event_kind::out || happened.kind == event_kind::err) {
        read_printed(reading, happened.text);
    } else if (happened.kind == event_kind::act) {
        if (happened.text.starts_with("press ")) {
            held.insert(happened.text.substr(6));
        } else if (happened.text.starts_with("release ")) {
            held.erase(happened.text.substr(8));
        } else if (happened.text.ends_with(end_marker)) {
            end_marker_stands = happened.text.starts_with("found ");
        }
    }
    ++state_number;
    changed.notify_all();
}

void panel_session::take(const picture &seen) {
    const std::lock_guard lock(guard);
    now_seen = seen;
    ++picture_number;
    ++state_number;
    changed.notify_all();
}

picture panel_session::screen() {
    const std::lock_guard lock(guard);
    return now_seen;
}

std::string panel_session::act(std::string_view what, const std::string &value) {
    if (what == "start" || what == "resume") {
        const std::lock_guard lock(starting);
        start(what == "resume");
        return {};
    }
    const std::lock_guard lock(guard);
    if (supply_named(what) != nullptr) {
        return set_volts(std::string(what), value);
    }
    if (what == "usb") {
        if (value != "host" && value != "device") {
            return "The USB mode is host or device.";
        }
        subject.usb_mode = value;
        if (hand) {
            hand->supply(usb_mode_of(value));
        }
        ++state_number;
        changed.notify_all();
        return {};
    }
    if (!hand) {
        return not_running;
    }
    if (what == "cut") {
        hand->cut_power();
    } else if (what == "acknowledge") {
        hand->acknowledge_end();
    } else {
        return move_key(what, value);
    }
    return {};
}

std::string panel_session::move_key(std::string_view what, const std::string &name) {
    const std::optional<key> known = key_named(name);
    if (!known) {
        return "There is no key " + name + ".";
    }
    what == "press" ? hand->press(*known) : hand->release(*known);
    return {};
}

std::string panel_session::set_volts(const std::string &which, const std::string &value) {
    char *end = nullptr;
    const double volts = strtod(value.c_str(), &end);
    if (value.empty() || *end != '\0' || !(volts >= 0 && volts <= most_volts)) {
        return "A supply has 0 to 30 V.";
    }
    subject.volts[which] = volts;
    if (hand) {
        hand->supply(supply_named(which)->measured(volts));
    }
    ++state_number;
    changed.notify_all();
    return {};
}

std::string panel_session::status() const {
    if (phase == "off") {
        return "The unit is ready. Set its supplies and start.";
    }
    if (phase != "running") {
        return end_text;
    }
    if (subject.model == "oled") {
        return "The example is drawing.";
    }
    const std::string now = "The unit is " + std::string(words_of(reading.reached));
    return reading.reached == stage::ending ? now + ": " + verdict_of(reading).line() : now + ".";
}

json panel_session::state() const {
    json volts = subject.volts;
    volts["usb"] = subject.usb_mode;
    return {{"model", subject.model},
            {"subject", subject.package.filename().string()},
            {"phase", phase},
            {"status", status()},
            {"asked", phase == "running" && reading.reached == stage::asked},
            {"lit", lit},
            {"held", held},
            {"marker", end_marker_stands},
            {"picture", picture_number},
            {"supplies", volts}};
}

std::string panel_session::news(position &from, std::chrono::milliseconds patience) {
    std::unique_lock lock(guard);
    changed.wait_for(lock, patience, [&] {
        return closed || from.run != run_number || from.state != state_number;
    });
    if (closed) {
        return {};
    }
    std::string text;
    if (from.run != run_number) {
        text = as_news("run", run_number);
        from = {run_number, 0, -1};
    }
    json lines = json::array();
    for (; from.events < events.size(); ++from.events) {
        lines.push_back(as_line(events[from.events]));
    }
    if (!lines.empty()) {
        text += "id: " + std::to_string(run_number) + "." + std::to_string(from.events) + "\n" +
                as_news("lines", lines);
    }
    if (from.state != state_number) {
        text += as_news("state", state());
        from.state = state_number;
    }
    return text.empty() ? ":\n\n" : text;
}

void panel_session::close() {
    const std::lock_guard lock(guard);
    closed = true;
    changed.notify_all();
}

} // namespace simulator
