#pragma once

#include "simulator/desk/run_reading.h"
#include "simulator/unit/live.h"

#include <condition_variable>
#include <nlohmann/json_fwd.hpp>
#include <set>
#include <thread>

namespace simulator {

// A unit that is ready to run, and the arguments of its program.
struct prepared_run {
    unit described;
    std::vector<std::string> arguments;
};

// The unit behind a front panel.
struct panel_subject {
    std::string model; // "led", "screen" or "oled"
    std::filesystem::path package;
    std::map<std::string, double> volts; // initial values of "battery", "external" and "type_c"
    std::string usb_mode = "device";
    double clock_speed = 1;
    // Makes the unit for a run with the package. Throws std::exception if it cannot be run.
    std::function<prepared_run(const std::filesystem::path &package)> prepare;
};

// A unit under the control of the user of its front panel, with one run after the other. All
// operations may be called from any thread.
class panel_session {
public:
    explicit panel_session(panel_subject shown);
    ~panel_session(); // ends the run

    // Performs an action of the user: "press" and "release" with a key's name, "battery",
    // "external" and "type_c" with volts, "usb" with "host" or "device", "cut", "acknowledge",
    // "start", which ends a current run first, and "resume", which starts with what a power cut has
    // left. Returns an empty text, or the reason why it is not possible.
    std::string act(std::string_view what, const std::string &value);

    // Starts a run with another package.
    void start_with(const std::filesystem::path &package);

    // How much of the news a client has received.
    struct position {
        int run = -1;
        size_t events = 0;
        int state = -1;
    };

    // Returns the news since `from` as server-sent events (HTML standard, 9.2) and advances `from`.
    // Waits up to `patience` and returns a comment if there are none; returns nothing after
    // `close`.
    std::string news(position &from, std::chrono::milliseconds patience);

    // What the screen shows.
    picture screen();

    // Wakes all that wait for news.
    void close();

private:
    void start(bool on_what_is_left = false);
    void end_run();
    void run(live_hand &acting, bool on_what_is_left);
    void take(const event &happened);
    void take(const picture &seen);
    void finish(const std::string &phase, const std::string &words);
    std::string status() const;
    nlohmann::json state() const;
    std::string move_key(std::string_view what, const std::string &name);
    std::string set_volts(const std::string &which, const std::string &value);

    panel_subject subject;

    outcome left; // what a power cut left; only its tree is used

    std::mutex starting; // held while one run is ended and another is started
    std::thread runner;
    std::atomic<bool> stop = false;

    std::mutex guard; // of all that follows
    std::condition_variable changed;
    std::unique_ptr<live_hand> hand; // while a run goes on
    bool closed = false;
    int run_number = 0;
    int state_number = 0;
    std::vector<event> events; // the events of this run that the page shows
    std::string phase = "off"; // "running", "ended" or "cut"
    std::string end_text;
    run_reading reading;
    std::set<std::string> lit;
    std::set<std::string> held;
    bool end_marker_stands = false;
    picture now_seen;
    int picture_number = 0;
};

} // namespace simulator
