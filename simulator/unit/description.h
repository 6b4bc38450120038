#pragma once

#include "simulator/panels/picture.h"
#include "simulator/unit/event.h"
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

// The file with which the updater tells the rest of the unit that it is done.
constexpr const char end_marker[] = "/tmp/update_over";

// The SPI device nodes of a unit's displays.
constexpr const char lcd_node[] = "/dev/spidev1.0";
constexpr const char oled_node[] = "/dev/spidev0.0";

// One thing that the description makes happen.
struct happening {
    std::string name; // as the time line tells it, "press ok"
    moment when;
    std::function<void(struct running_unit &)> action;
};

enum class key : uint16_t; // see unit.h

// Things that happen; `when` is the start of the run.
happening pressing(key which);
happening releasing(key which);
happening removing(std::string_view path);
happening cutting_power();

// What the actions of a description act on while the unit runs.
struct running_unit {
    std::filesystem::path root;
    int key_device;     // -1 when the unit's is none that takes events
    unit_time key_time; // the time that a key event tells
    int signal_request; // the write end of the pipe to the unit's first process: one byte a signal
    bool power_cut = false;
};

struct unit_plan {
    std::filesystem::path program;
    std::vector<std::function<void(const std::filesystem::path &)>> tree_changes;
    std::vector<happening> happenings;
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

// Makes the tree of a unit with the usual content below `root`.
void make_usual_tree(const std::filesystem::path &root);

// The path below `root` of a path of the unit.
std::filesystem::path below(const std::filesystem::path &root, std::string_view path);

} // namespace simulator
