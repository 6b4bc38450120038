#pragma once

#include "simulator/panels/picture.h"
#include "simulator/unit/event.h"
#include "simulator/unit/key.h"
#include "simulator/unit/supplies.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace simulator {

// The file by which the updater tells the rest of the unit that it is done.
constexpr const char end_marker[] = "/tmp/update_over";

// The SPI device nodes of a unit's displays.
constexpr const char lcd_node[] = "/dev/spidev1.0";
constexpr const char oled_node[] = "/dev/spidev0.0";

// Something that the description makes happen during the run.
struct planned_action {
    std::string name; // as the time line shows it: "press ok"
    moment when;
    std::function<void(struct running_unit &)> action;
};

// Make planned actions; their `when` is the start of the run.
planned_action pressing(key which);
planned_action releasing(key which);
planned_action removing(std::string_view path);
planned_action cutting_power();

// What planned actions act on while the unit runs.
struct running_unit {
    std::filesystem::path root;
    int key_device;     // -1 if the unit's key device takes no events
    unit_time key_time; // the time stamp of a key event
    int signal_request; // write end of the pipe to the unit's first process; each byte is a signal
                        // number
    bool power_cut = false;
};

struct unit_plan {
    std::filesystem::path program;
    std::vector<std::function<void(const std::filesystem::path &)>> tree_changes;
    std::vector<planned_action> actions;
    std::vector<std::pair<int, uint64_t>> limits;
    std::map<std::string, std::string> environment;
    std::function<void(const event &)> watcher;
    std::function<void(const picture &)> screen_watcher;
    const std::atomic<bool> *stop_request = nullptr;
    class live_hand *hand = nullptr;
    bool careless_starter = false;
    bool application_reads_output = false;
    double clock_speed = 40;
    std::chrono::seconds patience{60};
};

// Creates the tree of a unit with the usual content below `root`.
void make_usual_tree(const std::filesystem::path &root);

// The path on the desk of a path of the unit whose tree is at `root`.
std::filesystem::path below(const std::filesystem::path &root, std::string_view path);

} // namespace simulator
