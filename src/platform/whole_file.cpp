#include "platform/whole_file.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace renewer {

namespace {

constexpr size_t block_size = 4096;

struct path_text {
    char text[PATH_MAX];
};

// Empty when the path would be too long.
path_text unfinished_beside(const char *path) {
    path_text beside;
    const int length = snprintf(beside.text, sizeof(beside.text), "%s.new", path);
    if (length < 0 || static_cast<size_t>(length) >= sizeof(beside.text)) {
        beside.text[0] = '\0';
    }
    return beside;
}

bool write_whole(int to, const char *bytes, size_t size) {
    while (size > 0) {
        const ssize_t written = write(to, bytes, size);
        if (written <= 0) {
            return false;
        }
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

bool copy_bytes(int from, int to) {
    char block[block_size];
    for (off_t offset = 0;;) {
        // pread, so that the caller's descriptor keeps its offset.
        const ssize_t size = pread(from, block, sizeof(block), offset);
        if (size <= 0) {
            return size == 0;
        }
        if (!write_whole(to, block, static_cast<size_t>(size))) {
            return false;
        }
        offset += size;
    }
}

bool same_bytes(int a, int b) {
    char block_a[block_size];
    char block_b[block_size];
    for (off_t offset = 0;;) {
        const ssize_t size = pread(a, block_a, sizeof(block_a), offset);
        if (size < 0 || pread(b, block_b, sizeof(block_b), offset) != size ||
            memcmp(block_a, block_b, static_cast<size_t>(size)) != 0) {
            return false;
        }
        if (size == 0) {
            return true;
        }
        offset += size;
    }
}

owned_descriptor open_regular(const char *path, struct stat &about) {
    owned_descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file || fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode)) {
        return owned_descriptor();
    }
    return file;
}

// The mode is set before the flush, so that it is on the medium before the file gets its name.
bool write_copy(const char *path, int source, const struct stat *replaced) {
    struct stat about;
    if (fstat(source, &about) != 0) {
        return false;
    }
    const owned_descriptor copy(
        open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, about.st_mode & 0777));
    return copy && copy_bytes(source, copy.get()) &&
           (replaced == nullptr || fchmod(copy.get(), replaced->st_mode & 07777) == 0) &&
           fsync(copy.get()) == 0;
}

void flush_directory_of(const char *path) {
    path_text directory;
    const char *const end = strrchr(path, '/');
    const int length = end == nullptr ? 0 : static_cast<int>(end - path);
    snprintf(directory.text, sizeof(directory.text), "%.*s/", length, path);
    // fsync(2) of a file does not flush its name in the directory.
    const owned_descriptor opened(open(directory.text, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        fsync(opened.get());
    }
}

} // namespace

bool holds_same(const char *path, int source) {
    struct stat about;
    const owned_descriptor file = open_regular(path, about);
    if (!file) {
        return false;
    }
    posix_fadvise(file.get(), 0, 0,
                  POSIX_FADV_DONTNEED); // so that the medium is compared, not the page cache
    return same_bytes(file.get(), source);
}

bool replace_file(const char *path, int source) {
    const path_text unfinished = unfinished_beside(path);
    struct stat replaced;
    const bool exists = stat(path, &replaced) == 0;
    // An interrupted run may have left it, and O_EXCL would refuse it.
    unlink(unfinished.text);
    if (!write_copy(unfinished.text, source, exists ? &replaced : nullptr) ||
        rename(unfinished.text, path) != 0) {
        unlink(unfinished.text);
        return false;
    }
    flush_directory_of(path);
    return true;
}

void remove_unfinished(const char *path) {
    unlink(unfinished_beside(path).text);
}

owned_descriptor copy_in_memory(const char *path) {
    struct stat about;
    const owned_descriptor file = open_regular(path, about);
    owned_descriptor copy(file ? memfd_create("copy", MFD_CLOEXEC) : -1);
    if (!copy || !copy_bytes(file.get(), copy.get()) ||
        fchmod(copy.get(), about.st_mode & 07777) != 0) {
        return owned_descriptor();
    }
    return copy;
}

void flush_file_system(const char *path) {
    const owned_descriptor opened(open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (opened) {
        syncfs(opened.get());
    }
}

} // namespace renewer
