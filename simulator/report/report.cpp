// The story of a run as a web page: the values for the template page.html.

#include "simulator/report/report.h"

#include "simulator/report/page.h"

#include <array>
#include <cstdio>
#include <ctemplate/template.h>
#include <set>

namespace simulator {

namespace {

using json = nlohmann::ordered_json;

constexpr double lane_width = 1000; // of the LEDs' time line, in its own units

std::string number(const char *format, double value) {
    std::array<char, 48> text;
    snprintf(text.data(), text.size(), format, value);
    return text.data();
}

// Every text, number and true value becomes a variable of the template, every object and list of
// objects a section.
void fill(ctemplate::TemplateDictionary &into, const json &from) {
    for (const auto &[name, value] : from.items()) {
        if (value.is_array()) {
            for (const json &item : value) {
                fill(*into.AddSectionDictionary(name), item);
            }
        } else if (value.is_object()) {
            fill(*into.AddSectionDictionary(name), value);
        } else if (value.is_string()) {
            into.SetValue(name, value.get<std::string>());
        } else if (value.is_number()) {
            into.SetValue(name, value.dump());
        } else if (value.is_boolean() && value.get<bool>()) {
            into.ShowSection(name);
        }
    }
}

std::string duration(double took) {
    return took < 1 ? number("%.0f ms", took * 1000) : number("%.2f s", took);
}

std::string volts(const json &supply) {
    return supply.contains("raw") ? number("raw %.0f", supply["raw"])
                                  : number("%.2f V", supply["volts"]);
}

// Events that are folded away between the other lines.
bool is_quiet(const json &event, const json *before) {
    const std::string kind = event["kind"], text = event["text"];
    return kind == "led" || ((kind == "waits" || kind == "sleeps") && text.starts_with("0.")) ||
           (before != nullptr && (*before)["kind"] == kind && (*before)["text"] == text);
}

json line_of(const json &event, const json &pictures, std::set<size_t> &shown) {
    std::string text = event["text"];
    text.erase(text.find_last_not_of('\n') + 1);
    json line = {{"time", number("%.3f", event["at"])}, {"kind", event["kind"]}, {"text", text}};
    if (event.contains("took")) {
        line["duration"] = {{"took", duration(event["took"])}};
    }
    if (event["kind"] == "screen") {
        const size_t which = std::stoul(text.substr(text.rfind(' ') + 1));
        for (size_t same = 0; same <= which && line.find("picture") == line.end(); ++same) {
            if (pictures[same]["png"] == pictures[which]["png"] && shown.insert(same).second) {
                line["picture"] = pictures[which];
                line["picture"]["name"] = text;
            } else if (pictures[same]["png"] == pictures[which]["png"]) {
                line["text"] = "picture " + std::to_string(same) + " again";
                break;
            }
        }
    }
    return line;
}

// The time line: lines, and groups of quiet ones.
json lines_of(const json &run) {
    json lines = json::array(), quiet = json::array();
    std::set<size_t> shown;
    const auto end_quiet = [&] {
        if (!quiet.empty()) {
            lines.push_back({{"quiet", {{"count", quiet.size()}, {"line", quiet}}}});
        }
        quiet = json::array();
    };
    const json *before = nullptr;
    for (const json &event : run["events"]) {
        const json line = line_of(event, run["pictures"], shown);
        if (is_quiet(event, before)) {
            quiet.push_back(line);
        } else {
            end_quiet();
            lines.push_back({{"loud", line}});
            before = &event;
        }
    }
    end_quiet();
    return lines;
}

json lanes_of(const json &run) {
    json lanes = json::array();
    const double whole =
        run["events"].empty() ? 1 : std::max(run["events"].back()["at"].get<double>(), 0.001);
    for (const json &led : run["leds"]) {
        json spans = json::array();
        for (const json &span : led["lit"]) {
            const double from = span["from"], to = span["to"];
            spans.push_back(
                {{"x", number("%.2f", from / whole * lane_width)},
                 {"width", number("%.2f", std::max((to - from) / whole * lane_width, 1.0))}});
        }
        lanes.push_back({{"name", led["name"].get<std::string>().substr(6)}, {"span", spans}});
    }
    return lanes.empty() ? json() : json{{"lane", lanes}, {"end", number("%.1f", whole)}};
}

std::string state_text(const json &state) {
    return state.is_null() ? "\u2014"
                           : std::to_string(state["size"].get<uintmax_t>()) + " bytes, " +
                                 state["sha256"].get<std::string>();
}

json changes_of(const json &run) {
    json changes = json::array();
    for (const json &file : run["files"]) {
        changes.push_back({{"path", file["path"]},
                           {"before", state_text(file["before"])},
                           {"after", state_text(file["after"])}});
    }
    return changes.empty() ? json() : json{{"file", changes}};
}

json run_of(const json &run, size_t index, size_t count) {
    json shown = {{"lines", lines_of(run)},
                  {"lanes", lanes_of(run)},
                  {"changes", changes_of(run)},
                  {"peak_memory_kib", run["peak_memory_kib"]}};
    if (count > 1) {
        shown["start"] = {{"which", index == 0 ? "First start" : "Start after the power cut"}};
    }
    if (!run["script_log"].get<std::string>().empty()) {
        shown["log"] = {{"text", run["script_log"]}};
    }
    return shown;
}

json page_of(const json &data) {
    const json &unit = data["unit"];
    json page = {{"word", data["verdict"]["word"]},
                 {"reason", data["verdict"]["reason"]},
                 {"pn", unit["pn"]},
                 {"battery", volts(unit["battery"])},
                 {"external", volts(unit["external"])},
                 {"type_c", volts(unit["type_c"])},
                 {"usb_mode", unit["usb_mode"]},
                 {"clock_speed", number("%g", data["clock_speed"])}};
    if (!data["verdict"]["look_at"].get<std::string>().empty()) {
        page["advice"] = {{"look_at", data["verdict"]["look_at"]}};
    }
    if (!data["package"].is_null()) {
        page["package"] = data["package"];
        page["package"]["headed"] = data["package"].contains("layout");
    }
    std::string command = "renewer";
    for (const json &argument : data["arguments"]) {
        command += " " + argument.get<std::string>();
    }
    page["command"] = command;
    for (size_t i = 0; i < data["runs"].size(); ++i) {
        page["run"].push_back(run_of(data["runs"][i], i, data["runs"].size()));
    }
    return page;
}

} // namespace

std::string report_of(const json &data) {
    const std::string name = "page.html";
    ctemplate::StringToTemplateCache(name, report_page.data(), report_page.size(),
                                     ctemplate::STRIP_BLANK_LINES);
    ctemplate::TemplateDictionary page(name);
    fill(page, page_of(data));
    std::string html;
    if (!ctemplate::ExpandTemplate(name, ctemplate::STRIP_BLANK_LINES, &page, &html)) {
        throw std::runtime_error("the report cannot be written");
    }
    return html;
}

} // namespace simulator
