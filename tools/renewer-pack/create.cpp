#include "commands.h"

#include "manifest.h"
#include "new_file.h"
#include "package/package.h"
#include "package_file.h"
#include "progress.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr size_t longest_version = 14;
constexpr uint64_t largest_offset = UINT32_MAX;
constexpr int latest_year = 9999; // the date of a header has four digits for it

void check_length(const char *name, const std::string &text, size_t longest) {
    if (text.size() > longest) {
        throw misused(std::string("the ") + name + " \"" + text + "\" has " +
                      std::to_string(text.size()) + " characters, the package has room for " +
                      std::to_string(longest));
    }
}

// Parses "M.S.R.T".
std::array<int, 4> version_numbers(const std::string &text) {
    std::array<int, 4> numbers = {};
    const char *begin = text.data();
    const char *const end = begin + text.size();
    for (size_t i = 0; i < numbers.size(); ++i) {
        const auto [parsed, error] = std::from_chars(begin, end, numbers[i]);
        const bool last = i + 1 == numbers.size();
        if (error != std::errc() || numbers[i] < 0 || (last ? parsed != end : parsed == end) ||
            (!last && *parsed != '.')) {
            throw misused("the version \"" + text + "\" is not four numbers, like 1.1.4.0");
        }
        begin = last ? parsed : parsed + 1;
    }
    return numbers;
}

// The time of making: SOURCE_DATE_EPOCH (reproducible builds; seconds since 1970) when it is set,
// the present local time otherwise.
struct tm time_of_making() {
    struct tm made = {};
    const char *const epoch = getenv("SOURCE_DATE_EPOCH");
    if (epoch == nullptr) {
        const time_t now = time(nullptr);
        localtime_r(&now, &made);
        return made;
    }
    time_t seconds = 0;
    const char *const end = epoch + strlen(epoch);
    const auto [parsed, error] = std::from_chars(epoch, end, seconds);
    if (error != std::errc() || parsed != end || seconds < 0 ||
        gmtime_r(&seconds, &made) == nullptr || made.tm_year > latest_year - 1900) {
        throw misused(std::string("SOURCE_DATE_EPOCH is \"") + epoch +
                      "\", not a number of seconds from 1970 to the year 9999");
    }
    return made;
}

// Bytes of all payloads with their padding.
uint64_t check_sources(const std::map<unsigned, fs::path> &sources) {
    uint64_t total = 0;
    for (const auto &[type, path] : sources) {
        if (!fs::exists(path)) {
            throw std::system_error(ENOENT, std::generic_category(), path.string());
        }
        if (!fs::is_regular_file(path)) {
            throw misused(path.string() + " is not a file");
        }
        const uint64_t size = fs::file_size(path);
        if (size == 0) {
            throw misused(path.string() + " is empty, and a node has at least one byte");
        }
        if (total > largest_offset || size > largest_offset) {
            throw misused(path.string() + " does not fit: a package ends at 4 GiB");
        }
        total += (size + 3) & ~uint64_t{3};
    }
    return total;
}

// The generator tells on standard output what this command says in its own words.
class silent_output {
public:
    silent_output() : kept(dup(STDOUT_FILENO)) {
        fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    ~silent_output() {
        fflush(stdout);
        dup2(kept, STDOUT_FILENO);
        close(kept);
    }
    silent_output(const silent_output &) = delete;
    silent_output &operator=(const silent_output &) = delete;

private:
    int kept;
};

renewer::package_plan plan_of(const package_description &description) {
    renewer::package_plan plan = {.version = {},
                                  .git_version = description.revision.c_str(),
                                  .pn = description.pn.c_str(),
                                  .made = time_of_making(),
                                  .sources = {}};
    const std::array<int, 4> version = version_numbers(description.version);
    std::copy(version.begin(), version.end(), plan.version);
    for (const auto &[type, path] : description.sources) {
        plan.sources[type] = path.c_str();
    }
    return plan;
}

void check_description(const package_description &description) {
    if (description.version.empty() || description.pn.empty() || description.revision.empty()) {
        throw misused("version, PN and revision are needed, as options or from the manifest");
    }
    version_numbers(description.version);
    check_length("version", description.version, longest_version);
    check_length("PN", description.pn, sizeof(renewer::pack_head_new::pn) - 1);
    check_length("revision", description.revision, sizeof(renewer::pack_head_new::git_version) - 1);
}

// While the file grows its size says how far the work is, then the position of the digest's reader.
uint64_t bytes_done(const new_file &file, uint64_t total) {
    return file.size() < total ? file.size() : total + file.position();
}

void write(const package_description &description, const fs::path &output) {
    const renewer::package_plan plan = plan_of(description);
    const uint64_t total = check_sources(description.sources);
    new_file file(output);
    int written = 0;
    {
        const silent_output silence;
        const progress_bar bar("creating " + output.filename().string(), 2 * total,
                               [&] { return bytes_done(file, total); });
        errno = 0;
        written = renewer::write_package(plan, file.temporary().c_str());
    }
    if (written == 0) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(),
                                output.string() + " could not be written");
    }
    file.put_in_place();
}

} // namespace

int create(const create_options &options) {
    package_description description;
    if (!options.manifest.empty()) {
        description = read_manifest(options.manifest);
    }
    for (const auto &[given, text] : {std::pair(&options.version, &description.version),
                                      std::pair(&options.pn, &description.pn),
                                      std::pair(&options.revision, &description.revision)}) {
        if (!given->empty()) {
            *text = *given;
        }
    }
    package_description given;
    for (const std::string &source : options.sources) {
        add_source(source, given);
    }
    given.sources.merge(description.sources); // keeps what is given
    description.sources = given.sources;
    check_description(description);
    write(description, options.output);
    const package_file package = read_package(options.output);
    printf("%s  %llu bytes, %zu nodes, md5 %s\n", options.output.c_str(),
           static_cast<unsigned long long>(package.size), package.nodes.size(),
           package.md5.c_str());
    return good;
}

} // namespace pack
