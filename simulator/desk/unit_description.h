#pragma once

#include "simulator/desk/moment_text.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace simulator {

// Where the application writes the versions of the packaged and of the installed updater.
constexpr const char package_version_path[] = "/tmp/pack_version";
constexpr const char installed_version_path[] = "/tmp/data_version";

// A file of the unit before the run.
struct unit_file {
    enum class kind { text, copy, link, directory, missing };
    std::string path;
    kind is = kind::text;
    std::string content; // the text, or the path to copy or to link to
    unsigned mode = 0644;
};

// A supply, in volts or in raw counts of the converter.
struct measured {
    double value;
    bool raw = false;
};

// A unit and what happens to it, from a unit file or the command line.
struct unit_description {
    std::string pn = "1013563400120000";
    measured battery{8.2}; // volts of both cells
    measured external{12}; // DC input
    measured type_c{0};
    std::string usb_mode = "device";
    std::vector<unit_file> files;
    std::string prompt_pictures = "usual"; // "none", or a directory
    std::vector<key_press> keys;
    std::optional<unit_time> acknowledged_after = 2s; // never if empty
    std::optional<moment> disk_full;
    std::string full_below = "/";     // where the full disk is mounted
    std::optional<int> lcd_transfers; // that succeed before all others fail
    std::optional<moment> power_cut;
    bool start_again = false; // after the power cut, with the storage that was left
};

// PN characters 2 and 3.
std::string model_of(const unit_description &described);
bool has_screen(const unit_description &described);

// The key code that the unit's power key sends: that of "right" on the panel with LEDs.
key power_key_of(const unit_description &described);

// The PN of a model: "led", "screen", or PN characters 2 and 3. Throws std::invalid_argument for
// other texts.
std::string pn_of_model(std::string_view model);

// Returns the text, or throws std::invalid_argument if it cannot be a part number.
std::string checked_pn(std::string_view pn);

// The content of a file on the desk. Throws std::runtime_error if it cannot be read.
std::string content_of_file(const std::string &path);

// Sets up the unit as described.
void describe(unit &it, const unit_description &described);

} // namespace simulator
