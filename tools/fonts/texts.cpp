#include "texts.h"

#include "utf8.h"

#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace fonts {

namespace {

// What stands in double quotes on a line, up to a comment.
std::string quoted_parts(const std::string &line) {
    std::string parts;
    char quote = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote == 0 && line.compare(i, 2, "//") == 0) {
            break;
        }
        if (quote != 0 && c == '\\') {
            ++i;
        } else if (quote == 0 && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == quote) {
            quote = 0;
        } else if (quote == '"') {
            parts += c;
        }
    }
    return parts;
}

std::string code_point(char32_t character) {
    char text[16];
    snprintf(text, sizeof(text), "U+%04X", static_cast<unsigned>(character));
    return text;
}

} // namespace

std::vector<std::string> characters_without_glyph(const std::filesystem::path &file,
                                                  const lists &characters) {
    std::ifstream lines(file);
    if (!lines) {
        throw std::runtime_error("cannot read " + file.string());
    }
    std::vector<std::string> missing;
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        for (const char32_t c : characters_of(quoted_parts(line))) {
            if (c >= 0x80 && characters.ideographs.find(c) == characters.ideographs.npos) {
                missing.push_back(file.string() + ":" + std::to_string(number) + ": no glyph for " +
                                  utf8_of(c) + " (" + code_point(c) + ")");
            }
        }
    }
    return missing;
}

} // namespace fonts
