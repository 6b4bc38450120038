#include "simulator/unit/live.h"

#include "simulator/unit/description.h"

#include <fstream>
#include <utility>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// Replaces the file atomically: a reader sees either the old content or the new one.
void replace_file(const fs::path &path, std::string_view content) {
    const fs::path beside = path.string() + ".new";
    std::ofstream(beside, std::ios::binary) << content;
    fs::rename(beside, path);
}

} // namespace

void live_hand::press(key which) {
    ask(pressing(which));
}

void live_hand::release(key which) {
    ask(releasing(which));
}

void live_hand::supply(const supply_file &changed) {
    ask({changed.name, {}, [changed](running_unit &running) {
             replace_file(below(running.root, changed.path), changed.content);
         }});
}

void live_hand::acknowledge_end() {
    ask(removing(end_marker));
}

void live_hand::cut_power() {
    ask(cutting_power());
}

void live_hand::ask(planned_action &&wanted) {
    const std::lock_guard lock(guard);
    asked.push_back(std::move(wanted));
}

std::vector<planned_action> live_hand::take() {
    const std::lock_guard lock(guard);
    return std::exchange(asked, {});
}

} // namespace simulator
