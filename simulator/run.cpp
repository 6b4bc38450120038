// One run of a program in a unit: makes the tree, starts the unit, makes happen what was
// described, and writes down what is seen.

#include "simulator/boundary.h"
#include "simulator/description.h"
#include "simulator/init.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

using clock = std::chrono::steady_clock;

[[noreturn]] void fail(const std::string &what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// A descriptor of the desk's.
class descriptor {
public:
    explicit descriptor(int opened, const char *what) : held(opened) {
        if (opened < 0) {
            fail(what);
        }
    }
    descriptor(const descriptor &) = delete;
    descriptor &operator=(const descriptor &) = delete;
    ~descriptor() { close_now(); }

    int get() const { return held; }
    void close_now() {
        if (held >= 0) {
            close(held);
        }
        held = -1;
    }

private:
    int held;
};

// A directory that is removed with its last user, unless the user of the desk wants to keep it.
std::shared_ptr<const fs::path> make_work_directory() {
    std::string name = fs::temp_directory_path() / "unit-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        fail("work directory");
    }
    return {new fs::path(name), [](const fs::path *directory) {
                if (getenv("RENEWER_KEEP_UNIT") == nullptr) {
                    std::error_code ignored;
                    fs::remove_all(*directory, ignored);
                } else {
                    fprintf(stderr, "unit kept: %s\n", directory->c_str());
                }
                delete directory;
            }};
}

// The stand-ins are one program under many names, and where a unit has them.
constexpr const char *stand_ins[] = {"/.simulator/bin/S080_application", "/.simulator/bin/reboot",
                                     "/etc/init.d/S080_application", "/etc/init.d/rc.stop",
                                     "/etc/init.d/umount_all"};

void copy_executable(const fs::path &from, const fs::path &to) {
    fs::create_directories(to.parent_path());
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    fs::permissions(to, static_cast<fs::perms>(0755));
}

// Key events tell their planned time, not the desk's, so that what is printed of them is the same
// in every run.
constexpr unit_time first_key_time = 1000s;

constexpr const char program_path[] = "/.simulator/program";

// What was built for a unit of another architecture takes the place of what was built beside the
// desk, when such a build is named (see `unit::run`).
const char *foreign_build() {
    return getenv("RENEWER_FOREIGN_BUILD");
}

fs::path as_observed(const fs::path &built) {
    const char *foreign = foreign_build();
    return foreign == nullptr ? built : foreign / fs::relative(built, SIMULATOR_BUILD);
}

void install_simulator(const fs::path &root, const fs::path &program) {
    for (const char *path : stand_ins) {
        if (!fs::exists(below(root, path))) {
            copy_executable(SIMULATOR_STAND_IN, below(root, path));
        }
    }
    // ld.so(8) puts the library directory of each process's own architecture for $LIB.
    copy_executable(SIMULATOR_BOUNDARY,
                    root / ".simulator/lib" / SIMULATOR_ARCHITECTURE / "boundary.so");
    if (foreign_build() != nullptr) {
        copy_executable(as_observed(SIMULATOR_BOUNDARY),
                        root / ".simulator/lib/arm-linux-gnueabihf/boundary.so");
    }
    copy_executable(as_observed(program), below(root, program_path));
}

sockaddr_un address_of(const fs::path &path) {
    sockaddr_un address = {AF_UNIX, {}};
    if (path.native().size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("work directory: path too long for a socket");
    }
    strcpy(address.sun_path, path.c_str());
    return address;
}

// The socket that all output and all records of a unit come to, in the order in which they were
// sent: each write of the program's is one datagram, and the sender's address tells which it is.
struct recorder {
    descriptor socket_fd;
    descriptor output;
    descriptor errors;
    std::array<std::string, 2> senders; // the addresses of `output` and `errors`
};

std::string own_address(int socket_fd) {
    sockaddr_un address = {};
    socklen_t size = sizeof(address);
    if (getsockname(socket_fd, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        fail("getsockname");
    }
    return {reinterpret_cast<const char *>(&address), size};
}

int connected_sender(const sockaddr_un &to) {
    const int sender = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_un unnamed = {AF_UNIX, {}};
    // Binding the family alone gives the socket an abstract address of its own (unix(7)).
    if (sender < 0 ||
        bind(sender, reinterpret_cast<const sockaddr *>(&unnamed), sizeof(sa_family_t)) != 0 ||
        connect(sender, reinterpret_cast<const sockaddr *>(&to), sizeof(to)) != 0) {
        fail("output socket");
    }
    return sender;
}

int bound_receiver(const sockaddr_un &at) {
    const int receiver = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (receiver < 0 || bind(receiver, reinterpret_cast<const sockaddr *>(&at), sizeof(at)) != 0) {
        fail("record socket");
    }
    return receiver;
}

// The kind that a record of the boundary names.
std::optional<event_kind> kind_named(std::string_view name) {
    for (int kind = 0; kind <= static_cast<int>(event_kind::exit); ++kind) {
        if (name_of(static_cast<event_kind>(kind)) == name) {
            return static_cast<event_kind>(kind);
        }
    }
    return std::nullopt;
}

// A happening whose moment has been reached or is awaited.
struct scheduled {
    const happening *what;
    int occurrences_seen = 0;
    std::optional<unit_time> due;
    bool done = false;
};

class observation {
public:
    observation(const fs::path &unit_root, double unit_speed,
                const std::vector<happening> &happenings,
                const std::function<void(const event &)> &unit_watcher, int key_device,
                int signal_request)
        : root(unit_root), speed(unit_speed), watcher(unit_watcher),
          start(clock::now()), acting{unit_root, key_device, {}, signal_request} {
        for (const happening &one : happenings) {
            schedule.push_back({&one, 0, {}, false});
            if (one.when.line.empty()) {
                schedule.back().due = one.when.delay;
            }
        }
    }

    unit_time now() const {
        return std::chrono::duration_cast<unit_time>((clock::now() - start) * speed);
    }

    void note(event_kind kind, std::string text) {
        const event happened = {now(), kind, std::move(text)};
        result.events.push_back(happened);
        if (watcher) {
            watcher(happened);
        }
        const std::string line = happened.line();
        for (scheduled &one : schedule) {
            if (!one.due && line.find(one.what->when.line) != std::string::npos &&
                ++one.occurrences_seen == one.what->when.occurrence) {
                one.due = happened.at + one.what->when.delay;
            }
        }
    }

    // Each line of what was printed is an event; an unfinished line is one too.
    void note_printed(event_kind kind, std::string_view text) {
        while (!text.empty()) {
            const size_t end = text.find('\n');
            const size_t length = end == std::string_view::npos ? text.size() : end + 1;
            note(kind, std::string(text.substr(0, length)));
            text.remove_prefix(length);
        }
    }

    void note_record(std::string_view record) {
        const size_t blank = record.find(' ');
        const std::string_view name = record.substr(0, blank);
        const std::string text(blank == std::string_view::npos ? "" : record.substr(blank + 1));
        if (name == "memory") {
            result.peak_memory_kib = std::stol(text);
        } else if (const auto kind = kind_named(name)) {
            note(*kind, text);
        }
    }

    void act_on_what_is_due() {
        for (size_t i = 0; i < schedule.size(); ++i) {
            if (schedule[i].due && !schedule[i].done && *schedule[i].due <= now()) {
                schedule[i].done = true;
                note(event_kind::act, schedule[i].what->name);
                acting.key_time = first_key_time + schedule[i].what->when.delay;
                schedule[i].what->action(acting);
            }
        }
    }

    // The rest of the unit acts on the end marker when it is there, not when it is asked for.
    void look_for_end_marker() {
        if (!end_marker_seen && fs::exists(below(root, end_marker))) {
            end_marker_seen = true;
            note(event_kind::act, std::string("found ") + end_marker);
        }
    }

    // Milliseconds of the desk until the next happening that is due.
    int desk_wait() const {
        unit_time next = 1h;
        for (const scheduled &one : schedule) {
            if (one.due && !one.done) {
                next = std::min(next, *one.due - now());
            }
        }
        const double desk = static_cast<double>(next.count()) / speed;
        return std::clamp(static_cast<int>(desk) + 1, 0, 5);
    }

    outcome result;

private:
    fs::path root;
    double speed;
    const std::function<void(const event &)> &watcher;
    clock::time_point start;
    running_unit acting;
    std::vector<scheduled> schedule;
    bool end_marker_seen = false;
};

// What the sanitizers found in the processes of the unit.
std::string sanitizer_reports(const fs::path &root) {
    std::string reports;
    for (const auto &entry : fs::directory_iterator(root / ".simulator")) {
        if (entry.path().filename().string().starts_with("report.")) {
            std::ifstream file(entry.path());
            reports.append(std::istreambuf_iterator<char>(file), {});
        }
    }
    return reports;
}

// Takes all that has come in.
void take_records(const recorder &from, observation &seen) {
    std::array<char, 256 * 1024> record;
    for (;;) {
        sockaddr_un sender = {};
        socklen_t sender_size = sizeof(sender);
        const ssize_t size = recvfrom(from.socket_fd.get(), record.data(), record.size(), 0,
                                      reinterpret_cast<sockaddr *>(&sender), &sender_size);
        if (size < 0) {
            return;
        }
        const std::string_view text(record.data(), static_cast<size_t>(size));
        const std::string_view address(reinterpret_cast<const char *>(&sender), sender_size);
        if (address == from.senders[0]) {
            seen.note_printed(event_kind::out, text);
        } else if (address == from.senders[1]) {
            seen.note_printed(event_kind::err, text);
        } else {
            seen.note_record(text);
        }
    }
}

int open_key_device(const fs::path &path) {
    return fs::is_fifo(path) ? open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1;
}

std::vector<std::string> environment_of(double speed,
                                        const std::map<std::string, std::string> &further) {
    std::vector<std::string> result = {
        "PATH=/.simulator/bin:/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL=C", "HOME=/",
        "LD_PRELOAD=/.simulator/$LIB/boundary.so",
        // The boundary stands ahead of the sanitizers' own libraries.
        "ASAN_OPTIONS=verify_asan_link_order=0:log_path=/.simulator/report",
        "UBSAN_OPTIONS=log_path=/.simulator/report", "TSAN_OPTIONS=log_path=/.simulator/report",
        std::string(speed_variable) + "=" + std::to_string(speed)};
    for (const auto &[name, value] : further) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<std::string> command_of(const std::vector<std::string> &arguments) {
    std::vector<std::string> command;
    if (const char *runner = getenv("RENEWER_RUNNER")) {
        command.emplace_back(runner);
    }
    command.emplace_back(program_path);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

void note_end(observation &seen, int result_pipe) {
    int status;
    if (read(result_pipe, &status, sizeof(status)) != sizeof(status)) {
        return;
    }
    if (WIFEXITED(status)) {
        seen.result.exit_status = WEXITSTATUS(status);
        seen.note(event_kind::exit, "status " + std::to_string(WEXITSTATUS(status)));
    } else {
        seen.result.ended_by = WTERMSIG(status);
        seen.note(event_kind::exit, "signal " + std::to_string(WTERMSIG(status)));
    }
}

} // namespace

outcome unit::run(const std::vector<std::string> &arguments) {
    const auto work_directory = make_work_directory();
    const fs::path root = *work_directory / "root";
    make_usual_tree(root);
    for (const auto &change : plan->tree_changes) {
        change(root);
    }
    install_simulator(root, plan->program.empty() ? SIMULATOR_PROGRAM : plan->program);

    const sockaddr_un record_address = address_of(below(root, record_path));
    recorder records = {descriptor(bound_receiver(record_address), "record socket"),
                        descriptor(connected_sender(record_address), "output"),
                        descriptor(connected_sender(record_address), "errors"),
                        {}};
    records.senders = {own_address(records.output.get()), own_address(records.errors.get())};

    int result_pipe[2];
    int signal_pipe[2];
    if (pipe2(result_pipe, O_CLOEXEC) != 0 || pipe2(signal_pipe, O_CLOEXEC) != 0) {
        fail("pipe");
    }
    descriptor result_read(result_pipe[0], "pipe");
    descriptor result_write(result_pipe[1], "pipe");
    descriptor signal_read(signal_pipe[0], "pipe");
    descriptor signal_write(signal_pipe[1], "pipe");
    const int key_device = open_key_device(below(root, "/dev/input/event1"));

    const boot how = {root,
                      command_of(arguments),
                      environment_of(plan->clock_speed, plan->environment),
                      plan->limits,
                      plan->application_reads_output,
                      records.output.get(),
                      records.errors.get(),
                      signal_read.get(),
                      result_write.get()};
    observation seen(root, plan->clock_speed, plan->happenings, plan->watcher, key_device,
                     signal_write.get());
    const pid_t unit_process = start_unit(how);
    result_write.close_now();
    const auto patience_ends = clock::now() + plan->patience;

    for (bool running = true; running;) {
        pollfd sources[] = {{records.socket_fd.get(), POLLIN, 0}, {result_read.get(), POLLIN, 0}};
        poll(sources, 2, seen.desk_wait());
        running = sources[1].revents == 0;
        take_records(records, seen);
        seen.look_for_end_marker();
        seen.act_on_what_is_due();
        const bool stop = plan->stop_request != nullptr && *plan->stop_request;
        if (running && (stop || clock::now() > patience_ends)) {
            seen.result.timed_out = true;
            kill(unit_process, SIGKILL);
            running = false;
        }
    }
    waitpid(unit_process, nullptr, 0);
    take_records(records, seen);
    note_end(seen, result_read.get());
    if (key_device >= 0) {
        close(key_device);
    }
    if (const std::string reports = sanitizer_reports(root); !reports.empty()) {
        throw std::runtime_error(reports);
    }
    seen.result.tree = std::shared_ptr<const fs::path>(
        new fs::path(root), [work_directory](const fs::path *path) { delete path; });
    return std::move(seen.result);
}

} // namespace simulator
