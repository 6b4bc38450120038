#include "package/reading.h"

#include "package/piped.h"
#include "platform/debug.h"
#include "platform/files.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

namespace renewer {

namespace {

static_assert(sizeof(off_t) == 8, "packages reach 4 GiB");

constexpr uint32_t longest_version_text = 64 * 1024; // a damaged header may claim up to 4 GiB

// Bytes of the package from `offset` to its end, as far as its size can be known: a regular file
// has one, a pipe or a device may hold anything.
uint64_t most_bytes_from(FILE *package, uint64_t offset) {
    struct stat status = {};
    if (fstat(fileno(package), &status) != 0 || !S_ISREG(status.st_mode)) {
        return UINT64_MAX;
    }
    const auto size = static_cast<uint64_t>(status.st_size);
    return size > offset ? size - offset : 0;
}

void report_short_table(uint64_t there, uint64_t wanted) {
    debug(1, "ret( %llu ) <  nodes( %llu )\n", static_cast<unsigned long long>(there),
          static_cast<unsigned long long>(wanted));
}

} // namespace

owned_file open_package(const char *path) {
    owned_descriptor input = open_without_waiting(path);
    if (!input) {
        return nullptr;
    }
    fcntl(input.get(), F_SETFL, 0); // reading waits
    owned_file package = lseek(input.get(), 0, SEEK_CUR) < 0 ? open_piped(std::move(input))
                                                             : stream_of(std::move(input), "r");
    if (package != nullptr) {
        make_unbuffered(package.get());
    }
    return package;
}

void make_unbuffered(FILE *stream) {
    setvbuf(stream, nullptr, _IONBF, 0);
}

bool seek_to(FILE *package, uint64_t offset) {
    return fseeko(package, static_cast<off_t>(offset), SEEK_SET) == 0;
}

bool read_version_text(FILE *package, pack_head_new *head) {
    const size_t length = std::min(head->version_len, longest_version_text);
    head->version_content = static_cast<char *>(calloc(length + 1, 1));
    if (head->version_content == nullptr) {
        return false;
    }
    return fread(head->version_content, 1, length, package) > 0;
}

bool read_head_new(FILE *package, pack_head_new *head) {
    // A short header is no error here; what is missing stays as the caller has set it.
    return fread(head, 1, pack_head_new_size, package) > 0 && read_version_text(package, head);
}

owned_memory<pack_node> read_node_table(FILE *package, uint64_t offset, uint32_t count) {
    const uint64_t wanted = uint64_t{count} * sizeof(pack_node);
    const uint64_t there = most_bytes_from(package, offset);
    if (there < wanted) {
        report_short_table(there, wanted);
        return nullptr;
    }
    if (count > most_node_records) {
        return nullptr;
    }
    // At least one record: calloc(3) may return null for none, which would count as a failure.
    owned_memory<pack_node> nodes(
        static_cast<pack_node *>(calloc(std::max(count, 1U), sizeof(pack_node))));
    if (nodes == nullptr || count == 0) {
        return nodes;
    }
    const bool found = seek_to(package, offset);
    const size_t taken = found ? fread(nodes.get(), 1, static_cast<size_t>(wanted), package) : 0;
    if (taken < wanted) {
        report_short_table(taken, wanted);
        return nullptr;
    }
    return nodes;
}

} // namespace renewer
