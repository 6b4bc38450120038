#include "commands.h"

#include "file_bytes.h"
#include "host_record.h"
#include "judgement.h"
#include "new_file.h"
#include "words.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace pack {

namespace {

using renewer::host_info;

constexpr size_t leading_bytes = sizeof(host_info::uninterpreted);

// The meaning of a part number's characters, by place.
struct meaning {
    size_t place;
    size_t count;
    const char *text;
};
constexpr meaning meanings[] = {
    {0, 2, "family; \"A1\" has rules of its own"},
    {2, 2, "model"},
    {4, 2, "GNSS board, as the search compares it"},
    {6, 2, "GNSS board, as the run compares it"},
    {8, 2, "GPRS module"},
    {10, 2, "radio"},
    {15, 1, "options"},
};

std::string more_about(const host_info &host, size_t place) {
    if (place == 2) {
        return std::string(", with ") + prompts_of(host);
    }
    return place == 15 ? (host.pn[15] & 2) != 0 ? ": L-band" : ": no L-band" : "";
}

int show_record(const std::filesystem::path &path) {
    const host_info host = read_host_record(path);
    printf("%s\n", printable(path.string()).c_str());
    printf("  bytes 0 to 6   %s (not read)\n",
           hexadecimal_bytes(reinterpret_cast<const uint8_t *>(host.uninterpreted), leading_bytes)
               .c_str());
    printf("  part number    %s\n", printable(part_number_of(host)).c_str());
    for (const auto &[place, count, text] : meanings) {
        const std::string characters = characters_of(host, place, count);
        const std::string places =
            std::to_string(place) + (count > 1 ? " and " + std::to_string(place + 1) : "");
        printf("  %-9s %-4s %s%s\n", places.c_str(),
               characters.empty() ? "-" : printable(characters).c_str(), text,
               more_about(host, place).c_str());
    }
    return good;
}

// Converts 14 hexadecimal digits to the seven leading bytes.
void put_leading(const std::string &digits, host_info &host) {
    const bool sound = digits.size() == 2 * leading_bytes &&
                       digits.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    if (!sound) {
        throw usage_error("--leading takes seven bytes as 14 hexadecimal digits, not \"" + digits +
                          "\"");
    }
    for (size_t i = 0; i < leading_bytes; ++i) {
        host.uninterpreted[i] = static_cast<char>(std::stoi(digits.substr(2 * i, 2), nullptr, 16));
    }
}

host_info make_record(const unit_options &options) {
    if (options.pn.size() < 4 || options.pn.size() >= renewer::host_pn_size ||
        !std::all_of(options.pn.begin(), options.pn.end(), is_letter_or_digit)) {
        throw usage_error("the part number of a unit has 4 to 69 letters and digits, not \"" +
                          options.pn + "\"");
    }
    host_info host = {};
    if (!options.leading.empty()) {
        put_leading(options.leading, host);
    }
    memcpy(host.pn, options.pn.data(), options.pn.size());
    return host;
}

} // namespace

int unit(const unit_options &options) {
    if (options.output.empty()) {
        if (options.records.empty() || !options.pn.empty()) {
            throw usage_error(
                "unit shows the host records that are named, or makes one from --pn with -o");
        }
        for (const std::filesystem::path &record : options.records) {
            show_record(record);
        }
        return good;
    }
    if (!options.records.empty()) {
        throw usage_error("unit either shows host records or makes one with -o");
    }
    const host_info host = make_record(options);
    new_file file(options.output, options.force);
    file.write({reinterpret_cast<const char *>(&host), sizeof(host)});
    file.put_in_place();
    return show_record(options.output);
}

} // namespace pack
