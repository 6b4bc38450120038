#include "update/package_removal.h"

#include "platform/debug.h"
#include "platform/owner.h"
#include "platform/shell.h"

#include <cstring>
#include <sys/stat.h>

namespace renewer {

namespace {

constexpr const char removable_prefix[] = "/firmware/update";

bool has_parent_component(const char *path) {
    for (const char *part = strstr(path, "/.."); part != nullptr; part = strstr(part + 1, "/..")) {
        if (part[3] == '/' || part[3] == '\0') {
            return true;
        }
    }
    return false;
}

// Whether a component below "/firmware" that has something after it (if only a slash) is a link,
// and so would be followed.
bool leads_through_link(const char *path) {
    const owned_memory<char> walked(strdup(path));
    if (walked == nullptr) {
        return true;
    }
    char *end = walked.get() + strlen("/firmware");
    while ((end = strchr(end + 1, '/')) != nullptr) {
        *end = '\0';
        struct stat about;
        if (lstat(walked.get(), &about) == 0 && S_ISLNK(about.st_mode)) {
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
    if (has_parent_component(path) || leads_through_link(path)) {
        debug(0, "package path leads out of %s, not removed\n", removable_prefix);
        return;
    }
    shell_with_argument("rm -rf", path);
}

} // namespace renewer
