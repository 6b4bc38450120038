#include "simulator/desk/package_offer.h"

#include "simulator/unit/package.h"

#include <array>

namespace simulator {

namespace {

namespace fs = std::filesystem;

// The updater's arguments for a package of the old layout, by its type (digit 6 of its part
// number).
struct old_type {
    const char *kind;
    size_t meant_for; // number of the first of the two digits for PN
};

constexpr std::array<old_type, 5> old_types = {{{"0", 2}, {"1", 4}, {"2", 9}, {"4", 2}, {"5", 2}}};
constexpr size_t type_digit = 6;

// The character that a hexadecimal digit is compared as: '0' plus its value, so "a" is ':'.
char character_of(char digit) {
    return static_cast<char>(digit >= 'a' ? '0' + 10 + digit - 'a' : digit);
}

std::vector<std::string> old_arguments(const std::string &digits, const std::string &path) {
    if (digits.size() <= type_digit) {
        throw package_refused("its part number has no type");
    }
    const auto type = static_cast<size_t>(digits[type_digit] - '0');
    const old_type which = type < old_types.size() ? old_types[type] : old_types.back();
    const std::string two = digits.substr(std::min(which.meant_for, digits.size()), 2);
    std::string meant_for;
    for (const char digit : two) {
        meant_for += character_of(digit);
    }
    return {which.kind, path, meant_for};
}

std::string without_line_end(std::string text) {
    while (text.ends_with('\n')) {
        text.pop_back();
    }
    return text;
}

nlohmann::ordered_json checked_header(const fs::path &path) {
    const pack_result check = run_pack({"check", "--", path});
    const std::string verdict = without_line_end(check.output);
    if (check.status != 0) {
        const std::string said = verdict.substr(std::min(verdict.size(), path.string().size() + 2));
        if (check.status == 1) { // "refused: ..."
            throw package_refused(said.substr(std::min(said.size(), said.find(": ") + 2)));
        }
        throw std::runtime_error(path.string() + ": " + said);
    }
    return nlohmann::ordered_json::parse(run_pack({"show", "--json", "--", path}).output);
}

std::vector<std::string> usual_arguments(const package_offer &offer, const std::string &on_unit,
                                         const unit_description &described) {
    if (offer.is_directory) { // a directory has no part number, so take the unit's own
        return {"0", on_unit, model_of(described)};
    }
    if (offer.header.at("layout") == "old") {
        return old_arguments(offer.header.at("pn"), on_unit);
    }
    return {"3", on_unit};
}

} // namespace

package_offer look_at_package(const fs::path &path, const unit_description &described,
                              const offer_overrides &overrides) {
    package_offer offer;
    offer.path = fs::absolute(path).lexically_normal();
    offer.is_directory = fs::is_directory(path);
    if (!offer.is_directory) {
        offer.header = checked_header(path);
    }
    const fs::path named = offer.path.has_filename() ? offer.path : offer.path.parent_path();
    const std::string on_unit =
        overrides.path.empty() ? "/media/sda1/" + named.filename().string() : overrides.path;
    offer.arguments = usual_arguments(offer, on_unit, described);
    if (!overrides.kind.empty()) {
        offer.arguments[0] = overrides.kind;
    }
    if (!overrides.meant_for.empty()) {
        offer.arguments.resize(2);
        offer.arguments.push_back(overrides.meant_for);
    }
    return offer;
}

void take(unit &it, const package_offer &offer) {
    if (offer.is_directory) {
        it.unpacked_package(offer.path);
    } else {
        it.package(offer.path, offer.header.at("layout") != "old");
    }
}

} // namespace simulator
