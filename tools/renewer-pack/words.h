#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Texts for people, out of what packages and command lines hold.
namespace pack {

// A text field of a header up to its terminator or its end.
std::string text_of(const char *field, size_t size);

// The text with what a terminal would act upon replaced by "?".
std::string printable(std::string text);

std::string hexadecimal(uint64_t value);

// "1.2.3" of the version of an old package.
std::string version_text(uint32_t version);

bool is_letter_or_digit(char c); // of ASCII

// The text with its lines broken at blanks, so that none has more than `columns` characters; where
// it has line ends they stay.
std::string wrapped(const std::string &text, size_t columns);

// ", did you mean "kernel"?" for a word that is nearly one of those that exist; else nothing.
std::string suggestion(const std::string &word, const std::vector<std::string> &existing);

} // namespace pack
