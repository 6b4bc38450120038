#include "platform/files.h"

#include <cerrno>
#include <fcntl.h>

namespace renewer {

owned_file open_for_reading(const char *path) {
    if (path == nullptr) {
        errno = EFAULT;
        return nullptr;
    }
    owned_descriptor descriptor(open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    owned_file file(descriptor ? fdopen(descriptor.get(), "r") : nullptr);
    if (file != nullptr) {
        descriptor.release();
    }
    return file;
}

} // namespace renewer
