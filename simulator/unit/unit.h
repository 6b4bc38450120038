#pragma once

#include "simulator/unit/event.h"
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

// A unit on the desk. A description of a unit and of what happens to it is built up, the
// unmodified program is run in it, and what it did comes back as a time line and a file tree:
//
//     const outcome end = unit()
//                             .model("13")
//                             .press(key::ok, after("led Light_Gps 255", 1s))
//                             .acknowledge_end(3s)
//                             .run({"1", "/media/sda1/update", "34"});
//
// The program sees the absolute paths of a unit, a shell with the usual commands, and devices that
// answer; it can neither see nor change anything outside, and nothing of it goes on running after
// `run` has returned. Needs user namespaces, or root.
namespace simulator {

// Event codes of the front-panel keys.
enum class key : uint16_t { ok = 2, right = 3, left = 4, down = 5, up = 6, esc = 7, power = 8 };

class unit {
public:
    unit();

    // PN characters 2 and 3 ("13": LEDs, "16": screen), in a PN that is otherwise usual:
    // "10<model>563400120000". Characters: 0,1 "10"; 4,5 "56"; 6,7 "34" (GNSS board); 8,9 "00"
    // (GPRS); 10,11 "12" (radio).
    unit &model(std::string_view two_characters);
    unit &part_number(std::string_view pn);

    // Adds to or changes the tree, by paths of the unit. Parents are made as needed.
    unit &file(std::string_view path, std::string_view content, unsigned mode = 0644);
    unit &directory(std::string_view path);
    unit &link(std::string_view path, std::string_view target);
    unit &without(std::string_view path); // a file or a directory with all in it

    // The script that the update brings as "/firmware/update/install.sh"; by default it prints two
    // lines and succeeds. Written as it stands, so it needs its own "#!" line if it wants one.
    unit &install_script(std::string_view text);

    // The update comes as this package (renewer-pack makes them): it is unpacked into
    // "/firmware/update", in place of what is usually there, and the header of the new layout left
    // in "/data/app/log/pack_tmp", as the unit's main application does before it starts the
    // updater.
    unit &package(const std::filesystem::path &file, bool with_header = true);
    // The update comes unpacked, as this directory of the desk.
    unit &unpacked_package(const std::filesystem::path &directory);

    // What an earlier run has left in the unit's storage; all that a start makes anew is anew.
    unit &started_on(const outcome &left);
    // Called with the unit's tree when all that is described is in it, before the run.
    unit &before_start(std::function<void(const std::filesystem::path &)> look);

    // Supplies. The defaults are a full battery and an external 12 V supply.
    unit &supply(const struct supply_file &measured); // see supplies.h
    unit &adc(int channel, std::string_view text);    // "in_voltage<channel>_raw"
    unit &battery_volts(double volts);                // of the whole battery (two cells)
    unit &external_volts(double volts);               // DC input
    unit &without_external_power();
    unit &type_c_volts(double volts);
    unit &usb_mode(std::string_view text); // "host", "device"

    // The LCD: after this many SPI transfers all others fail.
    unit &spi_transfers_that_work(int count);
    // The prompt pictures of the desk in "/reserve/update" (confirm, updating frames, results).
    unit &with_prompt_pictures();

    // The key device: a descriptor that is always readable and gives 0 bytes (a dead device), or
    // reads that fail (`key_device_failing`), or none (`without("/dev/input/event1")`).
    unit &dead_key_device();
    unit &failing_key_device();

    // What happens during the run. Key events carry as their time 1000 s and the moment's delay.
    // A press and, `hold` later, its release; each followed by a synchronisation event.
    unit &press(key which, const moment &when, unit_time hold = 100ms);
    unit &key_event(uint16_t code, int32_t value, const moment &when); // one 16-byte event
    unit &acknowledge_end(unit_time delay); // removes "/tmp/update_over" that long after it is made
    unit &remove(std::string_view path, const moment &when);
    unit &write(std::string_view path, std::string_view content, const moment &when);
    // From then on writes to files below `path` fail as on a full disk, as far as they go through
    // write(2) or copy_file_range(2) of the C library (cp, dd, the shell's redirections).
    unit &fill_disk(std::string_view path, const moment &when);
    unit &kill_program(int signal, const moment &when);
    // Ends everything in the unit at once; the tree stays as it is at that moment.
    unit &cut_power(const moment &when);
    // Lets a hand act on the unit while it runs; it stands until then.
    unit &in_hand(class live_hand &acting);
    // Runs `action` with the directory that holds the unit's tree.
    unit &does(std::string_view name, std::function<void(const std::filesystem::path &)> action,
               const moment &when);

    // The application holds the other end of the program's output and stops reading when it ends.
    unit &output_read_by_application();

    // The program is started with every signal blocked, SIGCHLD and SIGTERM ignored and no
    // standard input, output and error.
    unit &careless_starter();

    // So many times no shell can be started for a command that begins with `command`.
    unit &without_shell(int times, std::string_view command);

    // Memory, files and processes that the program may use (setrlimit), by resource number.
    unit &limit(int resource, uint64_t value);

    unit &clock_speed(double times);                // default 40
    unit &patience(std::chrono::seconds real_time); // default 60 s; then the run is ended
    unit &environment(std::string_view name, std::string_view value);
    // Called with each event as it happens.
    unit &watch(std::function<void(const event &)> watcher);
    // Called with each picture that the screen shows.
    unit &watch_screen(std::function<void(const picture &)> watcher);
    // The run is ended when this becomes true, as by a signal handler of the desk's.
    unit &stop_when(const std::atomic<bool> &requested);

    // Another program instead of the updater (a driver of a test), by its path on the desk.
    unit &program(const std::filesystem::path &path);

    // Runs the program with these arguments until it ends. Two environment variables let a unit of
    // another architecture be run: RENEWER_FOREIGN_BUILD names a build directory from which the
    // program is taken instead, RENEWER_RUNNER the emulator that runs it.
    outcome run(const std::vector<std::string> &arguments);

private:
    std::shared_ptr<struct unit_plan> plan;
};

} // namespace simulator
