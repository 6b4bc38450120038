#include "commands.h"

#include "file_bytes.h"
#include "manifest.h"
#include "new_file.h"
#include "package/package.h"
#include "package/reading.h"
#include "package_file.h"
#include "platform/files.h"
#include "platform/owner.h"
#include "progress.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <system_error>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace pack {

namespace {

namespace fs = std::filesystem;

constexpr size_t longest_version = 14;
constexpr uint64_t largest_offset = UINT32_MAX;
constexpr int latest_year = 9999; // the header's date has four digits for the year

void check_length(const char *name, const std::string &text, size_t longest) {
    if (text.size() > longest) {
        throw usage_error(std::string("the ") + name + " \"" + text + "\" has " +
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
            throw usage_error("the version \"" + text + "\" is not four numbers, like 1.1.4.0");
        }
        begin = last ? parsed : parsed + 1;
    }
    return numbers;
}

// SOURCE_DATE_EPOCH (reproducible builds; seconds since 1970) if it is set, else the present local
// time.
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
        throw usage_error(std::string("SOURCE_DATE_EPOCH is \"") + epoch +
                          "\", not a number of seconds from 1970 to the year 9999");
    }
    return made;
}

// Size of a source in bytes; opens it to make sure that it can be read.
uint64_t check_source(const fs::path &path) {
    const std::ifstream file = open_file(path);
    if (!fs::is_regular_file(path)) {
        throw usage_error(path.string() + " is not a file");
    }
    const uint64_t size = fs::file_size(path);
    if (size == 0) {
        throw usage_error(path.string() + " is empty, and a node has at least one byte");
    }
    return size;
}

// Size of all payloads with their padding, in bytes.
uint64_t check_sources(const package_description &description) {
    uint64_t total = 0;
    for (const auto &[type, path] : description.sources) {
        const uint64_t size = check_source(path);
        if (total > largest_offset || size > largest_offset) {
            throw usage_error(path.string() + " does not fit: a package ends at 4 GiB");
        }
        total += renewer::align4(size);
    }
    return total;
}

// Reads a source again to find out whether it caused the failure.
void blame_source(const fs::path &path) {
    const renewer::owned_file file = renewer::open_for_reading(path.c_str());
    std::vector<char> chunk(128 * 1024);
    errno = 0;
    while (file != nullptr && fread(chunk.data(), 1, chunk.size(), file.get()) > 0) {
    }
    if (file == nullptr || ferror(file.get()) != 0) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(),
                                path.string() + " cannot be read");
    }
}

// Discards standard output during its lifetime: the generator prints there what this command says
// in its own words.
class silent_output {
public:
    silent_output() : kept(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)) {
        fflush(stdout);
        const renewer::owned_descriptor nowhere(open("/dev/null", O_WRONLY | O_CLOEXEC));
        dup2(nowhere.get(), STDOUT_FILENO);
    }
    ~silent_output() {
        fflush(stdout);
        dup2(kept.get(), STDOUT_FILENO);
    }
    silent_output(const silent_output &) = delete;
    silent_output &operator=(const silent_output &) = delete;

private:
    renewer::owned_descriptor kept;
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

// Reports the first of the required values that is missing.
void check_complete(const package_description &description) {
    for (const auto &[text, name, option] :
         {std::tuple(&description.version, "version", "--version"),
          std::tuple(&description.pn, "part number", "--pn"),
          std::tuple(&description.revision, "revision", "--revision")}) {
        if (text->empty()) {
            throw usage_error(std::string("the ") + name + " is missing: give it with " + option +
                              ", or in the manifest");
        }
    }
    if (description.sources.empty()) {
        throw usage_error("there are no nodes: give one at least, like kernel=zImage");
    }
}

void check_description(const package_description &description) {
    check_complete(description);
    version_numbers(description.version);
    check_length("version", description.version, longest_version);
    check_length("PN", description.pn, sizeof(renewer::pack_head_new::pn) - 1);
    check_length("revision", description.revision, sizeof(renewer::pack_head_new::git_version) - 1);
    if (!std::all_of(description.pn.begin(), description.pn.end(), is_letter_or_digit)) {
        throw usage_error("the PN \"" + description.pn + "\" is not of letters and digits alone");
    }
}

// While the file grows, its size is the progress; afterwards the position of the digest's reader.
uint64_t bytes_done(const new_file &file, uint64_t total) {
    return file.size() < total ? file.size() : total + file.position();
}

void write(const package_description &description, const create_options &options) {
    const renewer::package_plan plan = plan_of(description);
    const uint64_t total = check_sources(description);
    new_file file(options.output, options.force);
    int written = 0;
    std::atomic<bool> is_done = false;
    {
        const silent_output silence;
        const progress_bar bar("creating " + options.output.filename().string(), 2 * total,
                               [&] { return is_done ? 2 * total : bytes_done(file, total); });
        errno = 0;
        written = renewer::write_package(plan, file.temporary().c_str());
        is_done = written == 1;
    }
    if (written == 0) {
        const int reason = errno != 0 ? errno : EIO;
        for (const auto &[type, path] : description.sources) {
            blame_source(path);
        }
        throw std::system_error(reason, std::generic_category(),
                                options.output.string() + " could not be written");
    }
    file.put_in_place();
}

// The manifest's content, overridden by the command line.
package_description description_of(const create_options &options) {
    package_description description;
    for (const std::string &source : options.sources) {
        add_source(source, description);
    }
    package_description manifest;
    if (!options.manifest.empty()) {
        manifest = read_manifest(options.manifest);
    }
    description.version = options.version.empty() ? manifest.version : options.version;
    description.pn = options.pn.empty() ? manifest.pn : options.pn;
    description.revision = options.revision.empty() ? manifest.revision : options.revision;
    description.sources.merge(manifest.sources); // existing entries win
    return description;
}

std::vector<fs::path> inputs_of(const create_options &options,
                                const package_description &description) {
    std::vector<fs::path> inputs;
    for (const auto &[type, path] : description.sources) {
        inputs.push_back(path);
    }
    if (!options.manifest.empty()) {
        inputs.push_back(options.manifest);
    }
    return inputs;
}

} // namespace

int create(const create_options &options) {
    const package_description description = description_of(options);
    if (options.print_manifest) {
        print_manifest(description);
        return good;
    }
    if (options.output.empty()) {
        throw usage_error("where to write the package is missing: give it with -o");
    }
    check_description(description);
    check_target(options.output, options.force, inputs_of(options, description));
    if (options.quiet) {
        hide_progress();
    }
    write(description, options);
    if (!options.quiet) {
        const package_file package = read_package(options.output);
        printf("%s  %llu bytes, %zu nodes, md5 %s\n", printable(options.output.string()).c_str(),
               static_cast<unsigned long long>(package.size), package.nodes.size(),
               package.md5.c_str());
    }
    return good;
}

} // namespace pack
