#include "update/package_removal.h"

#include "platform/debug.h"
#include "platform/owner.h"
#include "platform/shell.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace renewer {

namespace {

constexpr const char removable_prefix[] = "/firmware/update";

// Whether ".." components lead, at any point of the path, above its first component below
// "/firmware".
bool leads_above(const char *path) {
    int depth = 0;
    for (const char *part = path + strlen("/firmware"); *part != '\0';) {
        part += strspn(part, "/");
        const size_t length = strcspn(part, "/");
        if (length == 2 && strncmp(part, "..", 2) == 0) {
            if (--depth < 1) {
                return true;
            }
        } else if (length > 0 && !(length == 1 && *part == '.')) {
            ++depth;
        }
        part += length;
    }
    return false;
}

// A path that cannot be examined counts as a link.
bool may_be_link(const char *path) {
    struct stat about;
    return lstat(path, &about) == 0 ? S_ISLNK(about.st_mode) : errno != ENOENT;
}

// Whether a component below "/firmware" that has something after it (if only a slash) is a link,
// and so would be followed.
bool leads_through_link(const char *path) {
    const owned_memory<char> walked(strdup(path));
    // Without memory to look, nothing is removed.
    if (walked == nullptr) {
        return true;
    }
    char *end = walked.get() + strlen("/firmware");
    while ((end = strchr(end + 1, '/')) != nullptr) {
        *end = '\0';
        if (may_be_link(walked.get())) {
            return true;
        }
        *end = '/';
    }
    return false;
}

} // namespace

void remove_package(const char *path) {
    if (strncmp(path, removable_prefix, strlen(removable_prefix)) != 0) {
        return;
    }
    if (leads_above(path) || leads_through_link(path)) {
        debug(0, "package path leads out of %s, not removed\n", removable_prefix);
        return;
    }
    shell_with_argument("rm -rf", path);
}

} // namespace renewer
