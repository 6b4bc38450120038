#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Makes text for people from the content of packages and command lines.
namespace pack {

// A text field of a header, up to its terminator or its end.
std::string text_of(const char *field, size_t size);

// The text with control characters replaced by "?".
std::string printable(std::string text);

std::string hexadecimal(uint64_t value);

// The version of an old package as "1.2.3".
std::string version_text(uint32_t version);

bool is_letter_or_digit(char c); // ASCII only

// The text wrapped at blanks to lines of at most `columns` characters; its own newlines are kept.
std::string wrapped(const std::string &text, size_t columns);

// ", did you mean "kernel"?" if the word is similar to an existing one; else empty.
std::string suggestion(const std::string &word, const std::vector<std::string> &existing);

} // namespace pack
