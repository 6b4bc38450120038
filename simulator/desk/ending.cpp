#include "simulator/desk/ending.h"

#include <array>

namespace simulator {

namespace {

constexpr std::array<ending_words, 17> endings = {{
    {ending::updated, "UPDATED", "the update is installed", ""},
    {ending::script_failed, "FAILED", "the install script failed",
     "the script's output, /data/app/log/update.log on the unit"},
    {ending::script_overran, "FAILED", "the install script ran over its time limit",
     "what the script waits for: /data/app/log/update.log has its output"},
    {ending::copy_failed, "FAILED", "the update could not be copied into /firmware",
     "the room in /firmware, and whether /firmware/update holds the unpacked package"},
    {ending::versions_unreadable, "FAILED",
     "the install script succeeded, but a version file cannot be read",
     "/tmp/pack_version and /tmp/data_version, which the application writes"},
    {ending::declined, "DECLINED", "the user declined", ""},
    {ending::unanswered, "DECLINED", "nobody answered within 120 s",
     "the key device /dev/input/event1, when somebody did press a key"},
    {ending::part_number, "REFUSED", "part number: the package is not for this unit",
     "the package's part number, and the unit's in /update/hw/sys"},
    {ending::path_not_allowed, "REFUSED", "path: packages below /mnt are not installed",
     "where the application puts the package"},
    {ending::host_record, "REFUSED", "host information: /update/hw/sys cannot be read",
     "/update/hw/sys"},
    {ending::no_prompts, "REFUSED", "prompts: there are none for this model",
     "characters 2 and 3 of the unit's part number: 13 (LEDs) or 16 (LCD)"},
    {ending::display, "REFUSED", "display: the LCD cannot be opened",
     "/dev/spidev1.0, and the LCD's cable"},
    {ending::no_indication, "REFUSED", "prompts: it could not be shown that the update runs",
     "/update/hw/sys, which is read anew for each prompt"},
    {ending::battery, "REFUSED", "battery below 30 %, no external supply",
     "the battery and the supply; the readings are in the output"},
    {ending::package, "REFUSED", "package: it fails its check",
     "the package: renewer-pack check FILE"},
    {ending::wrong_arguments, "REFUSED", "the updater was started with wrong arguments",
     "how the application starts the updater: renewer KIND PATH PN"},
    {ending::cut, "CUT", "the run did not come to its end",
     "power, and what else may have ended the updater"},
}};

constexpr std::array<std::string_view, 12> stages = {
    "checking the package",
    "stopping the application and preparing the prompts",
    "checking the supplies",
    "waiting for the user's answer",
    "starting the update",
    "copying the update into /firmware",
    "starting the install script",
    "running the install script",
    "running the install script once more",
    "replacing the updater's own copy and showing the result",
    "waiting for the application's acknowledgement",
    "restarting the unit",
};

} // namespace

const ending_words &words_of(ending which) {
    static_assert(endings.back().which == ending::cut &&
                  endings.size() == static_cast<size_t>(ending::cut) + 1);
    return endings.at(static_cast<size_t>(which));
}

std::string_view words_of(stage reached) {
    static_assert(stages.size() == static_cast<size_t>(stage::restarting) + 1);
    return stages.at(static_cast<size_t>(reached));
}

} // namespace simulator
