#include "host_record.h"

#include "commands.h"
#include "file_bytes.h"
#include "package_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace pack {

namespace {

constexpr size_t model_end = 4; // a record without the model is of no use

bool is_part_number(const std::string &text) {
    const auto graphic = [](char c) { return c > ' ' && c < '\x7f'; };
    return text.size() >= model_end && std::all_of(text.begin(), text.end(), graphic) &&
           std::all_of(text.begin(), text.begin() + model_end, is_letter_or_digit);
}

} // namespace

renewer::host_info read_host_record(const std::filesystem::path &path) {
    std::ifstream file = open_file(path);
    renewer::host_info host = {};
    file.read(reinterpret_cast<char *>(&host), sizeof(host));
    if (file.gcount() == 0) {
        errno = ENODATA;
        fail(path);
    }
    std::string text = part_number_of(host);
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) { // added by an editor
        text.pop_back();
    }
    if (!is_part_number(text)) {
        throw usage_error(path.string() +
                          " is not a host record: from byte 7 on there is no part number "
                          "(renewer-pack unit makes one)");
    }
    return host;
}

std::string part_number_of(const renewer::host_info &host) {
    return text_of(host.pn, sizeof(host.pn));
}

std::string characters_of(const renewer::host_info &host, size_t place, size_t count) {
    const std::string text = part_number_of(host);
    return place < text.size() ? text.substr(place, count) : "";
}

} // namespace pack
