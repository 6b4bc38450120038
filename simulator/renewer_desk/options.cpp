#include "simulator/renewer_desk/options.h"

#include <array>

namespace simulator {

namespace {

// An option that describes the unit. Its text is parsed twice: at first only to report errors
// before anything starts.
struct unit_option {
    const char *name;
    void (*take)(unit_description &described, const std::string &text);
    bool screen_only = false;
};

measured supply_of(const std::string &text) {
    const bool raw = text.starts_with("raw:");
    const std::string number = raw ? text.substr(4) : text;
    char *end = nullptr;
    const double value = strtod(number.c_str(), &end);
    if (number.empty() || *end != '\0' || !(value >= 0 && value <= (raw ? 65535 : 60))) {
        throw std::invalid_argument("expected volts from 0 to 60, or raw:N for counts up to 65535");
    }
    return {value, raw};
}

int count_of(const std::string &text) {
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != text.npos) {
        throw std::invalid_argument("expected a count");
    }
    return std::stoi(text);
}

std::string path_on_unit(const std::string &text) {
    if (!text.starts_with('/') || std::filesystem::path(text).lexically_normal() != text) {
        throw std::invalid_argument("expected an absolute path on the unit");
    }
    return text;
}

unit_file file_of(const std::string &text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || !std::filesystem::is_regular_file(text.substr(equals + 1))) {
        throw std::invalid_argument("expected PATH=FILE with a FILE that exists");
    }
    const std::string file = text.substr(equals + 1);
    const auto mode = static_cast<unsigned>(std::filesystem::status(file).permissions());
    return {path_on_unit(text.substr(0, equals)), unit_file::kind::copy, file, mode};
}

constexpr unit_option unit_options[] = {
    {"--model",
     [](unit_description &unit, const std::string &text) { unit.pn = pn_of_model(text); }},
    {"--pn", [](unit_description &unit, const std::string &text) { unit.pn = checked_pn(text); }},
    {"--battery",
     [](unit_description &unit, const std::string &text) { unit.battery = supply_of(text); }},
    {"--external",
     [](unit_description &unit, const std::string &text) { unit.external = supply_of(text); }},
    {"--type-c",
     [](unit_description &unit, const std::string &text) { unit.type_c = supply_of(text); }},
    {"--usb-mode", [](unit_description &unit, const std::string &text) { unit.usb_mode = text; }},
    {"--file",
     [](unit_description &unit, const std::string &text) { unit.files.push_back(file_of(text)); }},
    {"--without",
     [](unit_description &unit, const std::string &text) {
         unit.files.push_back({path_on_unit(text), unit_file::kind::missing, "", 0});
     }},
    {"--package-version",
     [](unit_description &unit, const std::string &text) {
         unit.files.push_back({package_version_path, unit_file::kind::text, text + "\n", 0644});
     }},
    {"--installed-version",
     [](unit_description &unit, const std::string &text) {
         unit.files.push_back({installed_version_path, unit_file::kind::text, text + "\n", 0644});
     }},
    {"--prompt-pictures",
     [](unit_description &unit, const std::string &text) {
         if (text != "usual" && text != "none" && !std::filesystem::is_directory(text)) {
             throw std::invalid_argument("expected usual, none or a directory");
         }
         unit.prompt_pictures = text;
     },
     true},
    {"--press", [](unit_description &unit,
                   const std::string &text) { unit.keys.push_back(parse_press(text)); }},
    {"--acknowledge",
     [](unit_description &unit, const std::string &text) {
         unit.acknowledged_after = parse_acknowledgement(text);
     }},
    {"--disk-full-at", [](unit_description &unit,
                          const std::string &text) { unit.disk_full = parse_moment(text, false); }},
    {"--lcd-fails-after",
     [](unit_description &unit, const std::string &text) { unit.lcd_transfers = count_of(text); },
     true},
    {"--cut-power-at", [](unit_description &unit,
                          const std::string &text) { unit.power_cut = parse_moment(text, false); }},
};

void add_unit_option(CLI::App &command, const unit_option &one, run_options &options) {
    command
        .add_option_function<std::vector<std::string>>(
            one.name,
            [&one, &options](const std::vector<std::string> &texts) {
                for (const std::string &text : texts) {
                    try {
                        unit_description scratch;
                        one.take(scratch, text);
                    } catch (const std::invalid_argument &wrong) {
                        throw usage_error(std::string(one.name) + ": " + wrong.what());
                    }
                    options.changes.push_back(
                        [&one, text](unit_description &unit) { one.take(unit, text); });
                }
                if (one.screen_only) {
                    options.screen_options.push_back(one.name);
                }
            })
        ->allow_extra_args(false);
}

void add_unit_flags(CLI::App &command, run_options &options) {
    command.add_flag_callback("--no-external-power", [&options] {
        options.changes.push_back([](unit_description &unit) {
            unit.external = {0};
            unit.type_c = {0};
        });
    });
    command.add_flag_callback("--start-again", [&options] {
        options.changes.push_back([](unit_description &unit) { unit.start_again = true; });
    });
}

void add_checked(CLI::App &command, const char *name, std::string &into,
                 const std::vector<std::string> &known) {
    command.add_option_function<std::string>(name, [name, &into, known](const std::string &text) {
        std::string right;
        for (const std::string &one : known) {
            right += (right.empty() ? "" : ", ") + one;
        }
        if (std::find(known.begin(), known.end(), text) == known.end()) {
            throw usage_error(std::string(name) + " takes " + right);
        }
        into = text;
    });
}

} // namespace

void add_unit_options(CLI::App &command, run_options &options) {
    command.add_option("--unit", options.unit_file);
    for (const unit_option &one : unit_options) {
        add_unit_option(command, one, options);
    }
    add_unit_flags(command, options);
}

void add_speed(CLI::App &command, run_options &options) {
    command.add_option_function<double>("--speed", [&options](double speed) {
        if (!(speed >= 0.1 && speed <= 1000)) {
            throw usage_error("--speed takes a number from 0.1 to 1000");
        }
        options.speed = speed;
    });
}

void add_run_options(CLI::App &command, run_options &options) {
    add_unit_options(command, options);
    add_speed(command, options);
    add_checked(command, "--answer", options.answer, {"ok", "power", "other", "decline", "none"});
    add_checked(command, "--expect", options.expected,
                {"updated", "failed", "declined", "refused", "cut", "any"});
    command.add_option("--script", options.script);
    command.add_option_function<std::string>("--patience", [&options](const std::string &text) {
        try {
            options.patience = std::chrono::ceil<std::chrono::seconds>(parse_time(text));
        } catch (const std::invalid_argument &wrong) {
            throw usage_error(std::string("--patience: ") + wrong.what());
        }
    });
    command.add_option("--report", options.report);
    command.add_option("--json", options.json);
    command.add_option("--pictures", options.pictures);
    command.add_flag("--verbose", options.verbose);
    command.add_flag("--plain", options.plain);
}

} // namespace simulator
