#include "words.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace pack {

namespace {

// The number of letters to insert, remove, replace or swap with the next to turn `a` into `b`
// (Damerau-Levenshtein distance).
size_t distance(const std::string &a, const std::string &b) {
    std::vector<std::vector<size_t>> steps(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) {
        for (size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const size_t replaced = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
            }
        }
    }
    return steps[a.size()][b.size()];
}

} // namespace

std::string text_of(const char *field, size_t size) {
    return {field, strnlen(field, size)};
}

std::string printable(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\x7f' || (c >= 0 && c < ' '); }, '?');
    return text;
}

std::string hexadecimal(uint64_t value) {
    char text[24];
    snprintf(text, sizeof(text), "0x%llx", static_cast<unsigned long long>(value));
    return text;
}

std::string version_text(uint32_t version) {
    return std::to_string(version >> 16 & 255) + "." + std::to_string(version >> 8 & 255) + "." +
           std::to_string(version & 255);
}

bool is_letter_or_digit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string wrapped(const std::string &text, size_t columns) {
    std::string lines;
    size_t begin = 0; // of the current line, in `lines`
    size_t blank = 0; // the last place to break it
    for (const char c : text) {
        lines += c;
        if (c == '\n') {
            begin = lines.size();
        } else if (c == ' ') {
            blank = lines.size() - 1;
        } else if (lines.size() - begin > columns && blank > begin) {
            lines[blank] = '\n';
            begin = blank + 1;
        }
    }
    return lines;
}

std::string suggestion(const std::string &word, const std::vector<std::string> &existing) {
    constexpr size_t longest_word = 64; // longer than any known word
    if (word.size() > longest_word || existing.empty()) {
        return "";
    }
    const auto nearest = std::min_element(existing.begin(), existing.end(),
                                          [&](const std::string &a, const std::string &b) {
                                              return distance(word, a) < distance(word, b);
                                          });
    const size_t far = std::max<size_t>(1, nearest->size() / 3);
    return distance(word, *nearest) <= far ? ", did you mean \"" + *nearest + "\"?" : "";
}

} // namespace pack
