// Actions on a unit during a run, and how the run is watched.

#include "simulator/unit/unit.h"

#include "simulator/boundary/protocol.h"
#include "simulator/unit/description.h"

#include <bit>
#include <cstring>
#include <fstream>
#include <unistd.h>

namespace simulator {

namespace fs = std::filesystem;

namespace {

// One event of the unit's key device: 16 bytes, seconds and microseconds of the unit's clock, type
// (1: key, 0: synchronisation), code and value, all in the unit's byte order.
void send_key_event(const running_unit &running, uint16_t type, uint16_t code, int32_t value) {
    static_assert(std::endian::native == std::endian::little);
    struct {
        int32_t seconds;
        int32_t microseconds;
        uint16_t type;
        uint16_t code;
        int32_t value;
    } const record = {static_cast<int32_t>(running.key_time.count() / 1000),
                      static_cast<int32_t>(running.key_time.count() % 1000 * 1000), type, code,
                      value};
    static_assert(sizeof(record) == 16);
    if (running.key_device >= 0) {
        [[maybe_unused]] const ssize_t sent = write(running.key_device, &record, sizeof(record));
    }
}

// A key that is pressed or released sends its event and a synchronisation event.
planned_action key_action(const char *how, key which, int32_t value) {
    return {how + std::string(name_of(which)), {}, [which, value](running_unit &running) {
                send_key_event(running, 1, static_cast<uint16_t>(which), value);
                send_key_event(running, 0, 0, 0);
            }};
}

moment later(const moment &when, unit_time delay) {
    return {when.line, when.delay + delay, when.occurrence};
}

planned_action planned(planned_action what, const moment &when) {
    what.when = when;
    return what;
}

} // namespace

planned_action pressing(key which) {
    return key_action("press ", which, 1);
}

planned_action releasing(key which) {
    return key_action("release ", which, 0);
}

planned_action removing(std::string_view path) {
    return {"remove " + std::string(path), {}, [path = std::string(path)](running_unit &running) {
                fs::remove_all(below(running.root, path));
            }};
}

planned_action cutting_power() {
    return {"cut the power", {}, [](running_unit &running) { running.power_cut = true; }};
}

unit::unit() : plan(std::make_shared<unit_plan>()) {}

unit &unit::press(key which, const moment &when, unit_time hold) {
    plan->actions.push_back(planned(pressing(which), when));
    plan->actions.push_back(planned(releasing(which), later(when, hold)));
    return *this;
}

unit &unit::key_event(uint16_t code, int32_t value, const moment &when) {
    plan->actions.push_back(
        {"key event " + std::to_string(code) + " " + std::to_string(value), when,
         [code, value](const running_unit &running) { send_key_event(running, 1, code, value); }});
    return *this;
}

unit &unit::acknowledge_end(unit_time delay) {
    return remove(end_marker, after(std::string("act found ") + end_marker, delay));
}

unit &unit::remove(std::string_view path, const moment &when) {
    plan->actions.push_back(planned(removing(path), when));
    return *this;
}

unit &unit::write(std::string_view path, std::string_view content, const moment &when) {
    return does(
        "write " + std::string(path),
        [path = std::string(path), content = std::string(content)](const fs::path &root) {
            std::ofstream(below(root, path), std::ios::binary) << content;
        },
        when);
}

unit &unit::fill_disk(std::string_view path, const moment &when) {
    return does(
        "disk full below " + std::string(path),
        [path = std::string(path)](const fs::path &root) {
            std::ofstream(below(root, full_disk_path), std::ios::binary) << path;
        },
        when);
}

unit &unit::kill_program(int signal, const moment &when) {
    plan->actions.push_back(
        {"signal " + std::to_string(signal), when, [signal](const running_unit &running) {
             const char number = static_cast<char>(signal);
             [[maybe_unused]] const ssize_t sent = ::write(running.signal_request, &number, 1);
         }});
    return *this;
}

unit &unit::cut_power(const moment &when) {
    plan->actions.push_back(planned(cutting_power(), when));
    return *this;
}

unit &unit::in_hand(live_hand &acting) {
    plan->hand = &acting;
    return *this;
}

unit &unit::does(std::string_view name, std::function<void(const fs::path &)> action,
                 const moment &when) {
    plan->actions.push_back(
        {std::string(name), when, [action](const running_unit &running) { action(running.root); }});
    return *this;
}

unit &unit::output_read_by_application() {
    plan->application_reads_output = true;
    return *this;
}

unit &unit::careless_starter() {
    plan->careless_starter = true;
    return *this;
}

unit &unit::limit(int resource, uint64_t value) {
    plan->limits.emplace_back(resource, value);
    return *this;
}

unit &unit::clock_speed(double times) {
    plan->clock_speed = times;
    return *this;
}

unit &unit::patience(std::chrono::seconds real_time) {
    plan->patience = real_time;
    return *this;
}

unit &unit::environment(std::string_view name, std::string_view value) {
    plan->environment[std::string(name)] = value;
    return *this;
}

unit &unit::watch(std::function<void(const event &)> watcher) {
    plan->watcher = std::move(watcher);
    return *this;
}

unit &unit::watch_screen(std::function<void(const picture &)> watcher) {
    plan->screen_watcher = std::move(watcher);
    return *this;
}

unit &unit::spi_transfers_that_work(int count) {
    return environment(spi_transfers_variable, std::to_string(count));
}

unit &unit::without_shell(int times, std::string_view command) {
    return environment(shell_failures_variable, std::to_string(times) + " " + std::string(command));
}

unit &unit::stop_when(const std::atomic<bool> &requested) {
    plan->stop_request = &requested;
    return *this;
}

unit &unit::program(const fs::path &path) {
    plan->program = path;
    return *this;
}

} // namespace simulator
