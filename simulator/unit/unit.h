#pragma once

#include "simulator/unit/event.h"
#include "simulator/unit/key.h"
#include "simulator/unit/outcome.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A simulated unit on the desk. Describe a unit and what happens to it, run the unmodified program
// in it, and get back a time line and a file tree:
//
//     const outcome end = unit()
//                             .model("13")
//                             .press(key::ok, after("led Light_Gps 255", 1s))
//                             .acknowledge_end(3s)
//                             .run({"1", "/media/sda1/update", "34"});
//
// The program sees the absolute paths of a unit, a shell with the usual commands, and working
// devices. It can neither see nor change anything outside, and nothing of it is still running when
// `run` has returned. Needs user namespaces or root.
namespace simulator {

class unit {
public:
    unit();

    // PN characters 2 and 3 ("13": LEDs, "16": screen), in an otherwise usual PN:
    // "10<model>563400120000". Characters: 0,1 "10"; 4,5 "56"; 6,7 "34" (GNSS board); 8,9 "00"
    // (GPRS); 10,11 "12" (radio).
    unit &model(std::string_view two_characters);
    unit &part_number(std::string_view pn);

    // Add to or change the tree, by paths of the unit. Parent directories are made as needed.
    unit &file(std::string_view path, std::string_view content, unsigned mode = 0644);
    unit &directory(std::string_view path);
    unit &link(std::string_view path, std::string_view target);
    unit &without(std::string_view path); // a file, or a directory with its content

    // The script that the update brings as "/firmware/update/install.sh"; by default it prints two
    // lines and succeeds. It is written as given, so include a "#!" line if it needs one.
    unit &install_script(std::string_view text);

    // The update comes as this package (made by renewer-pack): it is unpacked into
    // "/firmware/update", replacing the usual content, and its header (new layout) is written to
    // "/data/app/log/pack_tmp", as the unit's main application does before it starts the updater.
    unit &package(const std::filesystem::path &file, bool with_header = true);
    // The update comes unpacked, from this directory on the desk.
    unit &unpacked_package(const std::filesystem::path &directory);

    // Starts with the storage that an earlier run has left; everything that does not survive a
    // restart is new.
    unit &started_on(const outcome &left);
    // `look` is called with the unit's complete tree before the run.
    unit &before_start(std::function<void(const std::filesystem::path &)> look);

    // Supplies. Default: a full battery and an external 12 V supply.
    unit &supply(const struct supply_file &measured); // see supplies.h
    unit &adc(int channel, std::string_view text);    // "in_voltage<channel>_raw"
    unit &battery_volts(double volts);                // of the whole battery (two cells)
    unit &external_volts(double volts);               // DC input
    unit &without_external_power();
    unit &type_c_volts(double volts);
    unit &usb_mode(std::string_view text); // "host", "device"

    // The LCD: all SPI transfers after this many fail.
    unit &spi_transfers_that_work(int count);
    // Puts the desk's prompt pictures into "/reserve/update" (confirm, updating frames, results).
    unit &with_prompt_pictures();

    // Every read of the key device fails; without("/dev/input/event1") there is none.
    unit &failing_key_device();

    // What happens during the run. Key events are stamped with 1000 s plus the moment's delay. A
    // press is followed `hold` later by its release, each with a synchronisation event.
    unit &press(key which, const moment &when, unit_time hold = 100ms);
    unit &key_event(uint16_t code, int32_t value, const moment &when); // one 16-byte event
    unit &acknowledge_end(unit_time delay); // removes "/tmp/update_over" that long after it appears
    unit &remove(std::string_view path, const moment &when);
    unit &write(std::string_view path, std::string_view content, const moment &when);
    // From then on writes to files below `path` fail as on a full disk, if they use the C library's
    // write(2) or copy_file_range(2) (cp, dd and the shell's redirections do).
    unit &fill_disk(std::string_view path, const moment &when);
    unit &kill_program(int signal, const moment &when);
    // Ends everything in the unit at once; the tree stays as it is at that moment.
    unit &cut_power(const moment &when);
    // Lets a hand act on the unit while it runs. `acting` must outlive the run.
    unit &in_hand(class live_hand &acting);
    // Calls `action` with the directory of the unit's tree.
    unit &does(std::string_view name, std::function<void(const std::filesystem::path &)> action,
               const moment &when);

    // The program's output is a pipe to the application, which stops reading when it ends.
    unit &output_read_by_application();

    // The program is started with all signals blocked, SIGCHLD and SIGTERM ignored, and without
    // standard input, output and error.
    unit &careless_starter();

    // Starting a shell fails this many times for commands that begin with `command`.
    unit &without_shell(int times, std::string_view command);

    // Limits a resource of the program (setrlimit(2)), by resource number.
    unit &limit(int resource, uint64_t value);

    unit &clock_speed(double times);                // default 40
    unit &patience(std::chrono::seconds real_time); // then the run is ended; default 60 s
    unit &environment(std::string_view name, std::string_view value);
    // `watcher` is called with each event as it happens.
    unit &watch(std::function<void(const event &)> watcher);
    // `watcher` is called with each picture that the screen shows.
    unit &watch_screen(std::function<void(const picture &)> watcher);
    // The run is ended when this becomes true (set by a signal handler, for example).
    unit &stop_when(const std::atomic<bool> &requested);

    // Runs another program instead of the updater (a test driver), by its path on the desk.
    unit &program(const std::filesystem::path &path);

    // Runs the program with these arguments until it ends. Two environment variables select a unit
    // of another architecture: RENEWER_FOREIGN_BUILD names the build directory from which the
    // program is taken, RENEWER_RUNNER the emulator that runs it.
    outcome run(const std::vector<std::string> &arguments);

private:
    std::shared_ptr<struct unit_plan> plan;
};

} // namespace simulator
