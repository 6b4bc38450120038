#include "platform/shell.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace renewer {

namespace {

// Characters that no shell gives a meaning to, wherever they stand in a word.
constexpr const char plain_characters[] = "abcdefghijklmnopqrstuvwxyz"
                                          "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                          "0123456789"
                                          "/._-+,:@%";

bool is_plain(const char *text) {
    return text[0] != '\0' && text[strspn(text, plain_characters)] == '\0';
}

} // namespace

int shell(const char *command) {
    fflush(stdout);
    return system(command);
}

owned_memory<char> shell_word(const char *text) {
    if (is_plain(text)) {
        return owned_memory<char>(strdup(text));
    }
    // Each ' becomes '\'' (POSIX shell, quoting): four bytes at the most, and the outer pair.
    owned_memory<char> word(static_cast<char *>(malloc(4 * strlen(text) + 3)));
    if (word == nullptr) {
        return word;
    }
    char *end = word.get();
    *end++ = '\'';
    for (; *text != '\0'; ++text) {
        if (*text == '\'') {
            end = stpcpy(end, "'\\''");
        } else {
            *end++ = *text;
        }
    }
    *end++ = '\'';
    *end = '\0';
    return word;
}

int shell_with_argument(const char *command, const char *argument) {
    const owned_memory<char> word = shell_word(argument);
    if (word == nullptr) {
        return -1;
    }
    const char *const separator = argument[0] == '-' ? " -- " : " ";
    const size_t size = strlen(command) + strlen(separator) + strlen(word.get()) + 1;
    const owned_memory<char> line(static_cast<char *>(malloc(size)));
    if (line == nullptr) {
        return -1;
    }
    snprintf(line.get(), size, "%s%s%s", command, separator, word.get());
    return shell(line.get());
}

} // namespace renewer
