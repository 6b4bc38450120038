#include "platform/shell.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace renewer {

namespace {

constexpr int shell_tries = 5;
constexpr unsigned pause_between_tries_s = 1;

// Characters without a special meaning to the shell, wherever they are in a word.
constexpr const char plain_characters[] = "abcdefghijklmnopqrstuvwxyz"
                                          "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                          "0123456789"
                                          "/._-+,:@%";

bool is_plain(const char *text) {
    return text[0] != '\0' && text[strspn(text, plain_characters)] == '\0';
}

// system(3), but always with -1 if there was no process or no memory for the shell. Some C
// libraries report that as "command not found" and leave the reason in errno; a shell that ran does
// not change errno.
int system_once(const char *command) {
    errno = 0;
    const int status = system(command);
    const bool not_found = WIFEXITED(status) && WEXITSTATUS(status) == exit_not_found;
    return not_found && (errno == EAGAIN || errno == ENOMEM) ? -1 : status;
}

void write_quoted(const char *text, char *word) {
    *word++ = '\'';
    for (; *text != '\0'; ++text) {
        if (*text == '\'') {
            word = stpcpy(word, "'\\''");
        } else {
            *word++ = *text;
        }
    }
    *word++ = '\'';
    *word = '\0';
}

} // namespace

int system_with_patience(const char *command) {
    int status = system_once(command);
    for (int tries = 1; status == -1 && tries < shell_tries; ++tries) {
        sleep(pause_between_tries_s);
        status = system_once(command);
    }
    return status;
}

int shell(const char *command) {
    // What is printed so far comes before the command's own output.
    fflush(stdout);
    return system_with_patience(command);
}

owned_memory<char> shell_word(const char *text) {
    // Each ' becomes '\'' (POSIX shell, quoting): four bytes at the most, and the outer pair.
    owned_memory<char> word(static_cast<char *>(malloc(4 * strlen(text) + 3)));
    if (word == nullptr) {
        return word;
    }
    if (is_plain(text)) {
        strcpy(word.get(), text);
    } else {
        write_quoted(text, word.get());
    }
    return word;
}

int shell_with_argument(const char *command, const char *argument) {
    const owned_memory<char> word = shell_word(argument);
    if (word == nullptr) {
        return -1;
    }
    // "--" ends the options (POSIX, utility syntax guideline 10).
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
