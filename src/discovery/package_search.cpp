#include "discovery/package_search.h"

#include "platform/owner.h"

#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace renewer {

namespace {

candidate_outcome judge_header(const host_info &host, const search_observer &observer,
                               package_candidate *candidate) {
    const pack_head &head = candidate->head;
    if (needs_hardware_check(head, host) && !observer.hardware_allows(observer.context, head)) {
        return candidate_outcome::other_hardware;
    }
    candidate->fit = judge_part_number(head, host);
    return candidate->fit.fits ? candidate_outcome::latest : candidate_outcome::other_part_number;
}

candidate_outcome judge_file(const char *dir, const char *name, const host_info &host,
                             const search_observer &observer, package_candidate *candidate) {
    const int length = snprintf(candidate->path, sizeof(candidate->path), "%s/%s", dir, name);
    if (!is_package_name(name)) {
        return candidate_outcome::other_name;
    }
    if (length < 0 || static_cast<size_t>(length) >= sizeof(candidate->path)) {
        return candidate_outcome::long_path;
    }
    if (get_pack_head(candidate->path, &candidate->head) == 0) {
        return candidate_outcome::short_header;
    }
    if (candidate->head.magic != magic_old) {
        return candidate_outcome::other_magic;
    }
    return judge_header(host, observer, candidate);
}

void keep_if_later(package_candidate *candidate, best_package *best) {
    if (cmp_version(candidate->head.version, best->version) <= 0) {
        candidate->outcome = candidate_outcome::not_later;
        return;
    }
    memset(best->path, 0, best->path_size);
    strcpy(best->path, candidate->path);
    best->version = candidate->head.version;
}

bool ends_search(candidate_outcome outcome) {
    return outcome == candidate_outcome::other_hardware ||
           outcome == candidate_outcome::other_part_number;
}

} // namespace

bool can_be_chosen(uint32_t version) {
    return cmp_version(version, 0) > 0 && static_cast<int32_t>(version) > 0;
}

package_candidate judge_candidate(const char *dir, const char *name, const host_info &host,
                                  const search_observer &observer) {
    package_candidate candidate = {};
    candidate.outcome = judge_file(dir, name, host, observer, &candidate);
    return candidate;
}

search_end search_directory(const char *dir, const host_info &host, const search_observer &observer,
                            best_package *best) {
    const owned_directory directory(access(dir, R_OK | W_OK) == 0 ? opendir(dir) : nullptr);
    if (directory == nullptr) {
        return search_end::not_listed;
    }
    while (const dirent *const entry = readdir(directory.get())) {
        package_candidate candidate = judge_candidate(dir, entry->d_name, host, observer);
        if (candidate.outcome == candidate_outcome::latest) {
            keep_if_later(&candidate, best);
        }
        observer.report(observer.context, candidate);
        if (ends_search(candidate.outcome)) {
            return search_end::at_candidate;
        }
    }
    return search_end::at_last_entry;
}

} // namespace renewer
