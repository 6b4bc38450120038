// The story of a run as data.

#include "simulator/desk/label.h"
#include "simulator/report/report.h"

#include <sodium.h>

namespace simulator {

namespace {

using json = nlohmann::ordered_json;

constexpr size_t longest_log = 256 * 1024; // of the script; only its end is kept

double seconds(unit_time time) {
    return static_cast<double>(time.count()) / 1000;
}

std::string base64_png(const picture &content) {
    const std::vector<uint8_t> png = png_of(content);
    constexpr int variant = sodium_base64_VARIANT_ORIGINAL;
    std::string text(sodium_base64_ENCODED_LEN(png.size(), variant), '\0');
    sodium_bin2base64(text.data(), text.size(), png.data(), png.size(), variant);
    text.pop_back(); // the terminator
    return text;
}

json supply_of(const measured &supply, const char *unit) {
    return supply.raw ? json{{"raw", supply.value}} : json{{unit, supply.value}};
}

json unit_of(const unit_description &described) {
    return {{"pn", described.pn},
            {"model", model_of(described)},
            {"battery", supply_of(described.battery, "volts")},
            {"external", supply_of(described.external, "volts")},
            {"type_c", supply_of(described.type_c, "volts")},
            {"usb_mode", described.usb_mode}};
}

json package_of(const package_offer &offer) {
    json package = {{"path", offer.path.string()}};
    if (!offer.header.is_null()) {
        package.update(offer.header);
    }
    return package;
}

json events_of(const outcome &end) {
    json events = json::array();
    for (size_t number = 0; number < end.events.size(); ++number) {
        const event &happened = end.events[number];
        if (happened.kind == event_kind::spi) {
            continue;
        }
        json one = {{"at", seconds(happened.at)},
                    {"kind", label_of(happened.kind)},
                    {"text", printable_lines(happened.text)}};
        if (const auto took = end.durations.find(number); took != end.durations.end()) {
            one["took"] = seconds(took->second);
        }
        if (happened.background) {
            one["background"] = true;
        }
        events.push_back(one);
    }
    return events;
}

// When each LED was lit.
json leds_of(const outcome &end) {
    std::map<std::string, json> lit;
    std::map<std::string, unit_time> since;
    const auto turn_off = [&](const std::string &name, unit_time at) {
        if (const auto on = since.find(name); on != since.end()) {
            lit[name].push_back({{"from", seconds(on->second)}, {"to", seconds(at)}});
            since.erase(on);
        }
    };
    for (const event &happened : end.events) {
        const std::string name = happened.text.substr(0, happened.text.find(' '));
        if (happened.kind != event_kind::led || !name.starts_with("Light_")) {
            continue;
        }
        lit.try_emplace(name, json::array());
        if (happened.text.ends_with(" 0")) {
            turn_off(name, happened.at);
        } else {
            since.try_emplace(name, happened.at);
        }
    }
    json leds = json::array();
    for (auto &[name, spans] : lit) {
        turn_off(name, end.events.back().at);
        leds.push_back({{"name", name}, {"lit", spans}});
    }
    return leds;
}

json state_of(const std::map<std::string, file_state> &files, const std::string &path) {
    const auto found = files.find(path);
    return found == files.end()
               ? json()
               : json{{"size", found->second.size}, {"sha256", found->second.sha256}};
}

json changes_of(const recorded_run &run) {
    std::map<std::string, file_state> all = run.before;
    all.insert(run.after.begin(), run.after.end());
    json changes = json::array();
    for (const auto &[path, state] : all) {
        const json before = state_of(run.before, path), after = state_of(run.after, path);
        if (before != after) {
            changes.push_back(
                {{"path", printable_lines(path)}, {"before", before}, {"after", after}});
        }
    }
    return changes;
}

json run_of(const recorded_run &run) {
    json pictures = json::array();
    for (const picture &seen : run.end.pictures) {
        pictures.push_back(
            {{"width", seen.width}, {"height", seen.height}, {"png", base64_png(seen)}});
    }
    std::string log = run.end.file("/data/app/log/update.log").value_or("");
    log = log.substr(log.size() - std::min(log.size(), longest_log));
    return {{"exit_status", run.end.exit_status},
            {"peak_memory_kib", run.end.peak_memory_kib},
            {"events", events_of(run.end)},
            {"leds", leds_of(run.end)},
            {"pictures", pictures},
            {"script_log", printable_lines(log)},
            {"files", changes_of(run)}};
}

// Length of the character (UTF-8, RFC 3629) that begins here; 0 when none does.
size_t character_length(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t length = first < 0x80   ? 1
                          : first < 0xC2 ? 0
                          : first < 0xE0 ? 2
                          : first < 0xF0 ? 3
                          : first < 0xF5 ? 4
                                         : 0;
    if (length > text.size()) {
        return 0;
    }
    for (size_t i = 1; i < length; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

} // namespace

std::string printable_lines(const std::string &text) {
    std::string shown;
    for (std::string_view rest = text; !rest.empty();) {
        const size_t length = character_length(rest);
        const auto byte = static_cast<unsigned char>(rest[0]);
        const bool is_control = (byte < ' ' && byte != '\n' && byte != '\t') || byte == 127;
        if (byte == '\r') {
            // Part of a line end.
        } else if (length == 0 || is_control) {
            shown += '?';
        } else {
            shown += rest.substr(0, length);
        }
        rest.remove_prefix(length == 0 ? 1 : length);
    }
    return shown;
}

json data_of(const run_story &story) {
    json data = {{"verdict",
                  {{"word", story.result.word},
                   {"reason", story.result.reason},
                   {"look_at", story.result.look_at}}},
                 {"unit", unit_of(story.described)},
                 {"package", story.offer ? package_of(*story.offer) : json()},
                 {"arguments", story.arguments},
                 {"clock_speed", story.speed},
                 {"runs", json::array()}};
    for (const recorded_run &run : story.runs) {
        data["runs"].push_back(run_of(run));
    }
    return data;
}

} // namespace simulator
