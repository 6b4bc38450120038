// One run of a program in a unit: makes the tree, starts the unit, performs the planned actions and
// records what happens.

#include "simulator/boundary/protocol.h"
#include "simulator/unit/description.h"
#include "simulator/unit/failure.h"
#include "simulator/unit/init.h"
#include "simulator/unit/installation.h"
#include "simulator/unit/observation.h"
#include "simulator/unit/pipe_pair.h"
#include "simulator/unit/recorder.h"
#include "simulator/unit/unit.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// A directory that is removed with its last owner, unless RENEWER_KEEP_UNIT is set.
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

// The sanitizers' reports about the processes of the unit.
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

int open_key_device(const fs::path &path) {
    return fs::is_fifo(path) ? open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC) : -1;
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

void take_records(recorder &from, observation &seen) {
    std::string_view text;
    for (;;) {
        switch (from.take(text)) {
        case recorder::source::none:
            return;
        case recorder::source::output:
            seen.note_printed(event_kind::out, text);
            break;
        case recorder::source::errors:
            seen.note_printed(event_kind::err, text);
            break;
        case recorder::source::record:
            seen.note_record(text);
            break;
        }
    }
}

// Watches the unit, and acts on it, until its program has ended, the patience is over or a stop is
// requested.
void observe(const unit_plan &plan, recorder &records, int result, pid_t unit_process,
             observation &seen) {
    const auto patience_ends = std::chrono::steady_clock::now() + plan.patience;
    for (bool running = true; running;) {
        pollfd sources[] = {{records.incoming(), POLLIN, 0}, {result, POLLIN, 0}};
        poll(sources, 2, seen.desk_wait());
        running = sources[1].revents == 0;
        take_records(records, seen);
        seen.act();
        const bool stop = plan.stop_request != nullptr && *plan.stop_request;
        const bool had_enough = stop || std::chrono::steady_clock::now() > patience_ends;
        if (running && (had_enough || seen.power_cut())) {
            seen.result.timed_out = !seen.power_cut();
            seen.result.power_cut = seen.power_cut();
            kill(unit_process, SIGTERM); // see `start_unit`
            running = false;
        }
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
    install_simulator(root, plan->program);

    recorder records(below(root, record_path));
    pipe_pair result;
    pipe_pair signal_request;
    const renewer::owned_descriptor key_device(open_key_device(below(root, "/dev/input/event1")));
    const boot how = {root,
                      command_of(arguments),
                      environment_of(*plan),
                      plan->limits,
                      plan->application_reads_output,
                      plan->careless_starter,
                      records.output(),
                      records.errors(),
                      signal_request.read_end.get(),
                      result.write_end.get()};
    observation seen(*plan, {root, key_device.get(), {}, signal_request.write_end.get()});
    const pid_t unit_process = start_unit(how);
    result.write_end.reset();

    observe(*plan, records, result.read_end.get(), unit_process, seen);
    waitpid(unit_process, nullptr, 0);
    take_records(records, seen);
    note_end(seen, result.read_end.get());
    if (const std::string reports = sanitizer_reports(root); !reports.empty()) {
        throw std::runtime_error(reports);
    }
    seen.result.tree = std::shared_ptr<const fs::path>(
        new fs::path(root), [work_directory](const fs::path *path) { delete path; });
    return std::move(seen.result);
}

} // namespace simulator
