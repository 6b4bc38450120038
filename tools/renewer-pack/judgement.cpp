#include "judgement.h"

#include "commands.h"
#include "host_record.h"
#include "unit/unit_model.h"

#include <array>

namespace pack {

namespace {

using renewer::candidate_outcome;
using renewer::host_info;
using renewer::pack_head;
using renewer::package_candidate;

constexpr std::array<const char *, 5> type_names = {"host", "GNSS board", "radio", "L-band",
                                                    "web GPRS"};
constexpr std::array<const char *, 4> kind_names = {"host", "GNSS board", "radio", "host"};

// The first of the two digits of an old package's part number that are compared, for kinds 0 to 2.
constexpr std::array<unsigned, 3> kind_digits = {2, 4, 9};

std::string digits_of(const pack_head &head, unsigned first, unsigned count) {
    std::string digits;
    for (unsigned i = first; i < first + count; ++i) {
        digits += "0123456789abcdef"[renewer::pn_digit(head, i)];
    }
    return digits;
}

// "2 and 3", or "13".
std::string range(size_t first, size_t count) {
    return std::to_string(first) + (count == 2 ? " and " + std::to_string(first + 1) : "");
}

std::string or_nothing(const std::string &characters) {
    return characters.empty() ? "nothing" : printable(characters);
}

// Judges an old package's part number as a unit's search does.
judgement compare(const pack_head &head, const renewer::compared_digits &compared,
                  const host_info &host) {
    const auto type = static_cast<size_t>(renewer::pn_digit(head, renewer::type_digit));
    judgement result;
    result.rule = "search";
    result.package = digits_of(head, compared.digit, compared.digits);
    result.unit = characters_of(host, compared.place, compared.places);
    const std::string name = type < type_names.size() ? type_names[type] + std::string(": ") : "";
    const std::string digits = compared.digits == 1 ? "digit " : "digits ";
    const std::string places = compared.places == 1 ? "place " : "places ";
    result.text = name;
    if (compared.digits > 0) {
        result.text += "the package is for " + result.package + " (its " + digits +
                       range(compared.digit, compared.digits) + ")";
    }
    if (compared.places > 0) {
        result.text += (compared.digits > 0 ? ", " : "") +
                       ("the unit has " + or_nothing(result.unit)) + " in " + places +
                       range(compared.place, compared.places);
    }
    return result;
}

std::string hardware_reason(const pack_head &head) {
    return "version " + version_text(head.version) +
           " is too old for the unit's hardware, which needs 2.0.16";
}

// Whether the result depends on the unit's inputs, which are not known.
bool is_open_question(const package_candidate &candidate, const host_info &host,
                      const std::string &inputs) {
    return inputs.empty() && renewer::needs_hardware_check(candidate.head, host) &&
           !renewer::is_fit_for_new_hardware(candidate.head.version);
}

std::string without_line_end(std::string text) {
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

int usual_kind(const package_file &package) {
    if (package.layout == layout_kind::new_layout) {
        return renewer::KIND_NEW_HOST;
    }
    return renewer::pn_digit(package.old_head, renewer::type_digit);
}

// The two characters that a package is for, and where they come from.
struct meant_for {
    std::string characters;
    std::string source;
};

meant_for characters_for(const package_file &package, int kind, const std::string &given) {
    const size_t place = renewer::compared_place(kind);
    if (kind == renewer::KIND_NEW_HOST ||
        (given.empty() && package.layout == layout_kind::new_layout)) {
        const std::string &pn = package.part_number;
        return {place < pn.size() ? pn.substr(place, 2) : "", "in places " + range(place, 2)};
    }
    if (!given.empty()) {
        return {given.substr(0, 2), "(--pn)"};
    }
    const unsigned first = kind_digits.at(static_cast<size_t>(kind));
    std::string characters;
    for (unsigned i = first; i < first + 2; ++i) {
        characters += static_cast<char>('0' + renewer::pn_digit(package.old_head, i));
    }
    return {characters, "(its digits " + range(first, 2) + ")"};
}

} // namespace

judgement judge_run(const package_file &package, const host_info &host,
                    const run_arguments &arguments) {
    const int kind = arguments.kind.value_or(usual_kind(package));
    judgement result;
    result.rule = "run, kind " + std::to_string(kind);
    const bool is_old = package.layout == layout_kind::old_layout;
    if (is_old && !arguments.kind && kind > renewer::KIND_RADIO) {
        result.rule = "run";
        result.text = "not asked: say with --kind how the updater is started for such a package";
        return result;
    }
    if (is_old && kind == renewer::KIND_NEW_HOST) {
        throw usage_error("kind 3 is for packages of the new layout, and " + package.path.string() +
                          " has the old one");
    }
    if (!renewer::is_checked_kind(kind)) {
        result.result = verdict::fits;
        result.text = "no part-number check: fits";
        return result;
    }
    const meant_for wanted = characters_for(package, kind, arguments.pn);
    const size_t place = renewer::compared_place(kind);
    const renewer::kind_judgement judged =
        renewer::judge_kind(kind, renewer::first_two(wanted.characters.c_str()), host);
    result.result = judged.fits ? verdict::fits : verdict::differs;
    result.package = wanted.characters;
    result.unit = characters_of(host, place, 2);
    const bool same_places = wanted.source.starts_with("in places");
    result.text = std::string(kind_names.at(static_cast<size_t>(kind))) + ": the package is for " +
                  or_nothing(wanted.characters) + " " + wanted.source + ", the unit has " +
                  or_nothing(result.unit) + (same_places ? "" : " in places " + range(place, 2)) +
                  (judged.fits ? ": fits" : ": does not fit");
    return result;
}

const char *prompts_of(const host_info &host) {
    const renewer::unit_model *const model = renewer::model_of(host);
    return model == nullptr                              ? "no prompts"
           : model->prompts == renewer::prompt_set::leds ? "LEDs"
                                                         : "a screen";
}

judgement judge_model(const host_info &host) {
    const bool is_known = renewer::model_of(host) != nullptr;
    judgement result;
    result.rule = "model";
    result.result = is_known ? verdict::fits : verdict::differs;
    result.unit = characters_of(host, 2, 2);
    result.text = "the unit has " + or_nothing(result.unit) + " in places 2 and 3, a model with " +
                  prompts_of(host) + (is_known ? ": fits" : ": the updater ends there");
    return result;
}

judgement judge_search(const package_file &package, const host_info &host,
                       const std::string &inputs) {
    std::string given = inputs;
    const renewer::search_observer observer = {inputs_allow, nullptr, &given};
    const std::string directory = package.path.has_parent_path() ? package.path.parent_path() : ".";
    const package_candidate candidate = renewer::judge_candidate(
        directory.c_str(), package.path.filename().c_str(), host, observer);
    judgement result;
    result.rule = "search";
    if (package.magic != renewer::magic_old) {
        result.text = "not asked: the search takes packages of the old layout alone";
        return result;
    }
    if (candidate.fit.first_line != nullptr) {
        result = compare(candidate.head, candidate.fit.compared, host);
        result.text += candidate.fit.fits ? ": fits" : ": does not fit";
    } else {
        result.text = reason_of(candidate, host, inputs);
    }
    const bool fits = candidate.outcome == candidate_outcome::latest;
    result.result = fits ? verdict::fits : verdict::differs;
    if (fits && !renewer::can_be_chosen(candidate.head.version)) {
        result.result = verdict::differs;
        result.text += ", but version " + version_text(candidate.head.version) +
                       (candidate.head.version >> 31 != 0 ? " with bit 31 set" : "") +
                       " is never chosen";
    } else if (fits && is_open_question(candidate, host, inputs)) {
        result.text += ", if not all presence inputs of the unit read 0";
    }
    return result;
}

bool inputs_allow(void *inputs, const pack_head &head) {
    return *static_cast<const std::string *>(inputs) != "000" ||
           renewer::is_fit_for_new_hardware(head.version);
}

std::string reason_of(const package_candidate &candidate, const host_info &host,
                      const std::string &inputs) {
    switch (candidate.outcome) {
    case candidate_outcome::other_name:
        return "the name is not that of a package";
    case candidate_outcome::long_path:
        return "the path is longer than 255 characters";
    case candidate_outcome::short_header:
        return "no header of 60 bytes can be read";
    case candidate_outcome::other_magic:
        return "the magic is " + hexadecimal(candidate.head.magic);
    case candidate_outcome::other_hardware:
        return hardware_reason(candidate.head);
    case candidate_outcome::other_part_number:
        return without_line_end(candidate.fit.note) +
               " (digits of the package: " + digits_of(candidate.head, 0, 14) + ")";
    case candidate_outcome::not_later:
    case candidate_outcome::latest:
        break;
    }
    return "fits, version " + version_text(candidate.head.version) +
           (is_open_question(candidate, host, inputs)
                ? ", if not all presence inputs of the unit read 0"
                : "");
}

} // namespace pack
