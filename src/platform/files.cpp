#include "platform/files.h"

#include <cerrno>
#include <fcntl.h>

namespace renewer {

owned_descriptor open_without_waiting(const char *path) {
    if (path == nullptr) {
        errno = EFAULT;
        return owned_descriptor();
    }
    return owned_descriptor(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
}

owned_file stream_of(owned_descriptor descriptor, const char *mode) {
    owned_file file(descriptor ? fdopen(descriptor.get(), mode) : nullptr);
    if (file != nullptr) {
        descriptor.release();
    }
    return file;
}

owned_file open_for_reading(const char *path) {
    return stream_of(open_without_waiting(path), "r");
}

bool is_file(const char *path, const struct stat &about) {
    struct stat found = {};
    return stat(path, &found) == 0 && found.st_dev == about.st_dev && found.st_ino == about.st_ino;
}

bool is_open_file(const char *path, FILE *stream) {
    struct stat about = {};
    return fstat(fileno(stream), &about) == 0 && is_file(path, about);
}

} // namespace renewer
