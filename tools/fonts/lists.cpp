#include "lists.h"

#include "utf8.h"

#include <fstream>
#include <map>
#include <stdexcept>

namespace fonts {

namespace {

struct part {
    std::u32string lists::*characters;
    size_t count;
};

const std::map<std::string, part> parts = {
    {"symbols", {&lists::symbols, 32}},   {"ideographs", {&lists::ideographs, 196}},
    {"repeats", {&lists::repeats, 2}},    {"signs", {&lists::signs, 1}},
    {"cyrillic", {&lists::cyrillic, 66}}, {"latin", {&lists::latin, 24}},
};

void add_line(lists &to, const std::string &line) {
    const size_t name_end = line.find_first_of(" \t");
    const auto known = parts.find(line.substr(0, name_end));
    if (known == parts.end() || name_end == line.npos) {
        throw std::runtime_error("cannot follow \"" + line + "\"");
    }
    const size_t colon = line.find(':', name_end);
    std::u32string &list = to.*known->second.characters;
    for (const char32_t character :
         characters_of(line.substr(colon == line.npos ? name_end : colon + 1))) {
        // A word may have an ideograph that an earlier one has brought.
        const bool again = known->first == "ideographs" && list.find(character) != list.npos;
        if (character != U' ' && !again) {
            list += character;
        }
    }
}

void check(const lists &all) {
    for (const auto &[name, about] : parts) {
        const size_t count = (all.*about.characters).size();
        if (count != about.count) {
            throw std::runtime_error(name + ": " + std::to_string(count) +
                                     " characters instead of " + std::to_string(about.count));
        }
    }
    for (const char32_t character : all.ideographs) {
        if (character < 0x4E00 || character > 0x9FA5) {
            throw std::runtime_error(utf8_of(character) + " is no ideograph that a text may hold");
        }
    }
    for (const char32_t character : all.repeats) {
        if (all.ideographs.find(character) == all.ideographs.npos) {
            throw std::runtime_error(utf8_of(character) + " repeats nothing");
        }
    }
}

} // namespace

lists read_lists(const std::filesystem::path &file) {
    std::ifstream lines(file);
    if (!lines) {
        throw std::runtime_error("cannot read " + file.string());
    }
    lists all;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line[0] != '#') {
            add_line(all, line);
        }
    }
    check(all);
    return all;
}

} // namespace fonts
