#include "simulator/guest/story.h"

#include "simulator/guest/keypad.h"
#include "simulator/guest/panel_node.h"
#include "simulator/guest/witness.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iomanip>
#include <optional>
#include <poll.h>
#include <sstream>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <time.h>

namespace simulator {

namespace {

namespace fs = std::filesystem;
using clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// How long the program may go on after it has requested the reboot, as in a real unit.
constexpr auto last_moments = 2s;

// The signal that reboot(8) sends to the first process.
constexpr int reboot_request = SIGTERM;

constexpr auto held_for = 100ms; // a key

struct planned_action {
    clock::duration delay;
    std::string line;
    std::string action;
    std::optional<clock::time_point> due;
    bool done = false;
};

uint16_t code_of(const std::string &number) {
    return static_cast<uint16_t>(std::stoi(number));
}

class player {
public:
    explicit player(const fs::path &results)
        : directory(results), time_line(results / "time_line"),
          seen([this](const std::string &line) { note(line); }), other_keys("other"),
          keys("keypad"), lcd("spidev1.0", panel) {}

    void read(const fs::path &story);
    ending play();

private:
    void note(const std::string &line);
    void note_printed(renewer::owned_descriptor &stream, const char *kind, std::string &unfinished);
    void start();
    void look_at_panel();
    void take_signal();
    void note_what_was_used() const;
    void act();
    void perform(const std::string &action);
    int wait_ms() const;

    fs::path directory;
    std::ofstream time_line;
    clock::time_point began = clock::now();
    sa1230_panel panel;
    int pictures = 0;
    witness seen;
    keypad other_keys, keys;
    panel_node lcd;
    renewer::owned_descriptor signals, out, err;
    std::string out_line, err_line;
    std::string command;
    std::vector<planned_action> actions;
    pid_t application = -1, program = -1;
    std::optional<clock::time_point> end_due;
    ending how = ending::power_off;
};

void player::read(const fs::path &story) {
    std::ifstream file(story);
    for (std::string line; std::getline(file, line);) {
        std::istringstream parts(line);
        std::string word, delay;
        std::getline(parts, word, '\t');
        if (word == "start") {
            std::getline(parts, command);
            continue;
        }
        planned_action next = {};
        std::getline(parts, delay, '\t');
        std::getline(parts, next.line, '\t');
        std::getline(parts, next.action);
        next.delay = std::chrono::milliseconds(std::stol(delay));
        actions.push_back(next);
    }
}

void player::note(const std::string &line) {
    const auto now = clock::now();
    time_line << std::fixed << std::setprecision(4)
              << std::chrono::duration<double>(now - began).count() << ' ' << line << '\n';
    time_line.flush();
    for (planned_action &next : actions) {
        if (!next.due && line.find(next.line) != std::string::npos) {
            next.due = now + next.delay;
        }
    }
    if (line.starts_with("led ")) {
        panel.led(std::string_view(line).substr(4));
    }
}

void player::note_printed(renewer::owned_descriptor &stream, const char *kind,
                          std::string &unfinished) {
    char text[4096];
    const ssize_t length = ::read(stream.get(), text, sizeof(text));
    if (length <= 0) {
        stream.reset(); // nobody has its other end open any more
    }
    for (ssize_t i = 0; i < length; ++i) {
        if (text[i] == '\n') {
            note(std::string(kind) + " " + unfinished);
            unfinished.clear();
        } else if (text[i] != '\r') {
            unfinished += text[i];
        }
    }
}

// Starts a program. A stream of -1 stays on the console.
pid_t started(const std::string &line, int out_stream, int err_stream) {
    const pid_t child = fork();
    if (child < 0) {
        fail("fork");
    }
    if (child == 0) {
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        dup2(out_stream, STDOUT_FILENO);
        dup2(err_stream, STDERR_FILENO);
        execl("/bin/sh", "sh", "-c", ("exec " + line).c_str(), nullptr);
        _exit(127);
    }
    return child;
}

// Programs inherit neither end, except as their standard output or error.
std::pair<int, int> stream() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        fail("pipe");
    }
    return {ends[0], ends[1]};
}

void player::start() {
    sigset_t heard;
    sigemptyset(&heard);
    sigaddset(&heard, SIGCHLD);
    sigaddset(&heard, reboot_request);
    sigprocmask(SIG_BLOCK, &heard, nullptr);
    signals.reset(signalfd(-1, &heard, SFD_CLOEXEC | SFD_NONBLOCK));
    application = started("S080_application", -1, -1);
    const auto [out_read, out_write] = stream();
    const auto [err_read, err_write] = stream();
    out.reset(out_read);
    err.reset(err_read);
    program = started(command, out_write, err_write);
    close(out_write);
    close(err_write);
}

void player::look_at_panel() {
    if (panel.pictures() == pictures) {
        return;
    }
    const std::string number = std::to_string(pictures);
    pictures = panel.pictures();
    const picture shown = panel.seen();
    std::ofstream file(directory / ("picture_" + number + ".ppm"), std::ios::binary);
    file << "P6 " << shown.width << ' ' << shown.height << " 255\n";
    file.write(reinterpret_cast<const char *>(shown.rgb.data()),
               static_cast<std::streamsize>(shown.rgb.size()));
    note("screen picture " + number);
}

// Records what the program has used: processor time of all its threads, but not of its commands,
// and the peak of its memory (proc_pid_status(5)).
void player::note_what_was_used() const {
    clockid_t its_clock = {};
    timespec used = {};
    clock_getcpuclockid(program, &its_clock);
    clock_gettime(its_clock, &used);
    std::ofstream file(directory / "used");
    file << static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6
         << " ms";
    std::ifstream status("/proc/" + std::to_string(program) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            file << ',' << line.substr(line.find_first_of(" \t"));
        }
    }
}

void player::take_signal() {
    signalfd_siginfo information;
    while (::read(signals.get(), &information, sizeof(information)) > 0) {
        if (information.ssi_signo == reboot_request) {
            note("reboot requested");
            note_what_was_used();
            how = ending::reboot;
            end_due = clock::now() + last_moments;
        }
    }
    int status;
    for (pid_t ended; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
        if (ended == application) {
            note("application ended");
        } else if (ended == program) {
            note(WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                                   : "signal " + std::to_string(WTERMSIG(status)));
            end_due = clock::now();
        }
    }
}

void player::perform(const std::string &action) {
    note("act " + action);
    const auto [word, argument] =
        std::pair(action.substr(0, action.find(' ')), action.substr(action.find(' ') + 1));
    if (word == "remove") {
        fs::remove(argument);
    } else if (word == "press") {
        keys.event(code_of(argument), 1);
        actions.push_back({{}, "", "release " + argument, clock::now() + held_for});
    } else if (word == "release") {
        keys.event(code_of(argument), 0);
    }
}

void player::act() {
    const auto now = clock::now();
    for (size_t i = 0; i < actions.size(); ++i) { // an action may add another one
        if (actions[i].due <= now && actions[i].due && !actions[i].done) {
            actions[i].done = true;
            perform(std::string(actions[i].action));
        }
    }
}

// Milliseconds until the next known moment, rounded up; -1 if there is none.
int player::wait_ms() const {
    std::optional<clock::time_point> next = end_due;
    for (const planned_action &coming : actions) {
        if (!coming.done && coming.due && (!next || *coming.due < *next)) {
            next = coming.due;
        }
    }
    if (!next) {
        return -1;
    }
    return static_cast<int>(
        std::max(0ms, std::chrono::ceil<std::chrono::milliseconds>(*next - clock::now())).count());
}

ending player::play() {
    start();
    while (!end_due || clock::now() < *end_due) {
        pollfd sources[] = {{seen.led_changes(), POLLIN, 0}, {seen.process_events(), POLLIN, 0},
                            {out.get(), POLLIN, 0},          {err.get(), POLLIN, 0},
                            {lcd.incoming(), POLLIN, 0},     {signals.get(), POLLIN, 0}};
        poll(sources, std::size(sources), wait_ms());
        const auto has_news = [&](int source) { return sources[source].revents != 0; };
        if (has_news(0)) {
            seen.look_at_leds();
        }
        if (has_news(1)) {
            seen.look_at_processes();
        }
        if (has_news(2)) {
            note_printed(out, "out", out_line);
        }
        if (has_news(3)) {
            note_printed(err, "err", err_line);
        }
        if (has_news(4)) {
            lcd.answer();
            look_at_panel();
        }
        if (has_news(5)) {
            take_signal();
        }
        act();
    }
    const bool faultless = panel.faults() == sa1230_panel::fault_counts{};
    note(faultless ? "panel understood all" : "panel did not understand all");
    return how;
}

} // namespace

ending play_story(const fs::path &story, const fs::path &results) {
    fs::create_directories(results);
    player unit(results);
    unit.read(story);
    return unit.play();
}

} // namespace simulator
