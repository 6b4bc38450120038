#include "simulator/desk/unit_file.h"

#include <cmath>
#include <fstream>
#include <stdexcept>
#include <yaml-cpp/yaml.h>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr uintmax_t largest_file = 1024 * 1024;

// An error at a place in the file; converted into the error that the caller sees.
struct field_error {
    int line; // from 0; -1 when not known
    std::string field;
    std::string what;
};

// A value and the field it belongs to.
struct value {
    YAML::Node node;
    std::string field;
    const fs::path &directory; // of the file

    [[noreturn]] void refuse(const std::string &what) const {
        throw field_error{node.Mark().line, field, what};
    }
};

std::string text_of(const value &given) {
    if (!given.node.IsScalar()) {
        given.refuse("expected a text");
    }
    return given.node.Scalar();
}

double number_of(const value &given) {
    double number = 0;
    if (!given.node.IsScalar() || !YAML::convert<double>::decode(given.node, number) ||
        !std::isfinite(number)) {
        given.refuse("expected a number");
    }
    return number;
}

double number_within(const value &given, double lowest, double highest) {
    const double number = number_of(given);
    if (number < lowest || number > highest) {
        given.refuse("expected a number from " + std::to_string(std::lround(lowest)) + " to " +
                     std::to_string(std::lround(highest)));
    }
    return number;
}

bool truth_of(const value &given) {
    bool truth = false;
    if (!given.node.IsScalar() || !YAML::convert<bool>::decode(given.node, truth)) {
        given.refuse("expected true or false");
    }
    return truth;
}

std::string path_on_unit(const value &given) {
    const std::string path = text_of(given);
    if (!path.starts_with('/') || fs::path(path).lexically_normal() != fs::path(path)) {
        given.refuse("expected an absolute path on the unit");
    }
    return path;
}

std::string path_on_desk(const value &given) {
    return given.directory / text_of(given);
}

// Adds the field to errors of the text parsers.
template <typename reader>
auto read_as(const value &given, const reader &read) {
    try {
        return read(text_of(given));
    } catch (const std::invalid_argument &trouble) {
        given.refuse(trouble.what());
    }
}

moment moment_of(const value &given) {
    return read_as(given, [](const std::string &text) { return parse_moment(text, false); });
}

template <typename record>
struct field {
    const char *name;
    void (*take)(record &into, const value &given);
};

// Reads a mapping according to the table of its fields.
template <typename record, size_t count>
void read_mapping(record &into, const value &given, const field<record> (&fields)[count]) {
    if (!given.node.IsMap()) {
        given.refuse("expected fields with their values");
    }
    for (const auto &entry : given.node) {
        const std::string name = entry.first.Scalar();
        std::string known;
        const field<record> *found = nullptr;
        for (const field<record> &one : fields) {
            known += (known.empty() ? "" : ", ") + std::string(one.name);
            found = name == one.name ? &one : found;
        }
        const std::string path = given.field.empty() ? name : given.field + "." + name;
        if (found == nullptr) {
            throw field_error{entry.first.Mark().line, path,
                              "there is no such field; there are " + known};
        }
        found->take(into, {entry.second, path, given.directory});
    }
}

// Volts, or {raw: counts}.
measured supply_of(const value &given) {
    measured supply = {0, false};
    if (given.node.IsMap()) {
        static constexpr field<measured> fields[] = {
            {"raw", [](measured &into, const value &counts) {
                 into = {number_within(counts, 0, 65535), true};
             }}};
        read_mapping(supply, given, fields);
        return supply;
    }
    return {number_within(given, 0, 60), false};
}

constexpr field<unit_file> file_fields[] = {
    {"text",
     [](unit_file &file, const value &given) {
         file.is = unit_file::kind::text;
         file.content = text_of(given);
     }},
    {"from",
     [](unit_file &file, const value &given) {
         file.is = unit_file::kind::copy;
         file.content = path_on_desk(given);
         if (!fs::is_regular_file(file.content)) {
             given.refuse("there is no file " + file.content);
         }
     }},
    {"link",
     [](unit_file &file, const value &given) {
         file.is = unit_file::kind::link;
         file.content = text_of(given);
     }},
    {"directory",
     [](unit_file &file, const value &given) {
         file.is = truth_of(given) ? unit_file::kind::directory : unit_file::kind::missing;
     }},
    {"mode",
     [](unit_file &file, const value &given) {
         const std::string text = text_of(given);
         size_t used = 0;
         if (text.empty() || text.find_first_not_of("01234567") != std::string::npos ||
             text.size() > 5) {
             given.refuse("expected an octal number, like 0755");
         }
         file.mode = static_cast<unsigned>(std::stoul(text, &used, 8));
     }},
};

// A path with its text, with fields, or with null for a file that is missing.
void take_files(unit_description &unit, const value &given) {
    if (!given.node.IsMap()) {
        given.refuse("expected paths with their content");
    }
    for (const auto &entry : given.node) {
        const std::string name = given.field + "." + entry.first.Scalar();
        unit_file file;
        file.path = path_on_unit({entry.first, name, given.directory});
        if (entry.second.IsMap()) {
            read_mapping(file, {entry.second, name, given.directory}, file_fields);
        } else if (entry.second.IsNull()) {
            file.is = unit_file::kind::missing;
        } else {
            file.content = text_of({entry.second, name, given.directory});
        }
        unit.files.push_back(file);
    }
}

void put_version(unit_description &unit, const char *path, const value &given) {
    unit.files.push_back({path, unit_file::kind::text, text_of(given) + "\n", 0644});
}

void take_versions(unit_description &unit, const value &given) {
    static constexpr field<unit_description> fields[] = {
        {"package", [](unit_description &into,
                       const value &text) { put_version(into, package_version_path, text); }},
        {"installed", [](unit_description &into,
                         const value &text) { put_version(into, installed_version_path, text); }},
    };
    read_mapping(unit, given, fields);
}

void take_keys(unit_description &unit, const value &given) {
    if (!given.node.IsSequence()) {
        given.refuse("expected a list of key presses, like [ok@2s]");
    }
    for (const YAML::Node &entry : given.node) {
        unit.keys.push_back(read_as(value{entry, given.field, given.directory}, parse_press));
    }
}

void take_application(unit_description &unit, const value &given) {
    static constexpr field<unit_description> fields[] = {
        {"acknowledges", [](unit_description &into, const value &when) {
             into.acknowledged_after = read_as(when, parse_acknowledgement);
         }}};
    read_mapping(unit, given, fields);
}

void take_disk_full(unit_description &unit, const value &given) {
    static constexpr field<unit_description> fields[] = {
        {"at", [](unit_description &into, const value &when) { into.disk_full = moment_of(when); }},
        {"below",
         [](unit_description &into, const value &path) { into.full_below = path_on_unit(path); }},
    };
    if (given.node.IsMap()) {
        unit.disk_full = at(0s);
        read_mapping(unit, given, fields);
    } else {
        unit.disk_full = moment_of(given);
    }
}

void take_faults(unit_description &unit, const value &given) {
    static constexpr field<unit_description> fields[] = {
        {"disk_full", take_disk_full},
        {"lcd_fails_after",
         [](unit_description &into, const value &count) {
             into.lcd_transfers = static_cast<int>(number_within(count, 0, 1e9));
         }},
        {"power_cut",
         [](unit_description &into, const value &when) { into.power_cut = moment_of(when); }},
        {"start_again",
         [](unit_description &into, const value &wanted) { into.start_again = truth_of(wanted); }},
    };
    read_mapping(unit, given, fields);
}

constexpr field<unit_description> unit_fields[] = {
    {"model",
     [](unit_description &unit, const value &given) { unit.pn = read_as(given, pn_of_model); }},
    {"pn",
     [](unit_description &unit, const value &given) { unit.pn = read_as(given, checked_pn); }},
    {"battery",
     [](unit_description &unit, const value &given) { unit.battery = supply_of(given); }},
    {"external",
     [](unit_description &unit, const value &given) { unit.external = supply_of(given); }},
    {"type_c", [](unit_description &unit, const value &given) { unit.type_c = supply_of(given); }},
    {"usb_mode",
     [](unit_description &unit, const value &given) { unit.usb_mode = text_of(given); }},
    {"files", take_files},
    {"versions", take_versions},
    {"pictures",
     [](unit_description &unit, const value &given) {
         const std::string which = text_of(given);
         unit.prompt_pictures = which == "usual" || which == "none" ? which : path_on_desk(given);
         if (unit.prompt_pictures != which && !fs::is_directory(unit.prompt_pictures)) {
             given.refuse("expected usual, none or a directory");
         }
     }},
    {"keys", take_keys},
    {"application", take_application},
    {"faults", take_faults},
};

unit_description read_text(const std::string &text, const fs::path &directory) {
    unit_description unit;
    const YAML::Node document = YAML::Load(text);
    if (!document.IsNull()) {
        read_mapping(unit, {document, "", directory}, unit_fields);
    }
    return unit;
}

} // namespace

unit_description read_unit_file(const fs::path &path) {
    const std::string name = path.string();
    std::error_code trouble;
    if (fs::is_regular_file(path, trouble) && fs::file_size(path, trouble) > largest_file) {
        throw std::runtime_error(name + ": too large for a unit file");
    }
    try {
        return read_text(content_of_file(name), path.parent_path());
    } catch (const field_error &wrong) {
        throw std::runtime_error(name + ":" + std::to_string(wrong.line + 1) + ": " +
                                 (wrong.field.empty() ? "" : wrong.field + ": ") + wrong.what);
    } catch (const YAML::Exception &wrong) {
        throw std::runtime_error(name + ":" + std::to_string(wrong.mark.line + 1) + ": " +
                                 wrong.msg);
    }
}

} // namespace simulator
