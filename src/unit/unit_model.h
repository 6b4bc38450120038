#pragma once

#include "unit/host_info.h"

namespace renewer {

// The sets of prompts that a unit may have: what its user sees and presses.
enum class prompt_set { leds, screen };

// How the battery and the supplies of a model are measured before an update.
struct power_check {
    const char *name; // printed before the measurement
    int machine_type; // see `get_bat_percent`
};

// What the updater has to know of a model of units.
struct unit_model {
    char pn2; // its part-number characters 2 and 3
    char pn3;
    prompt_set prompts;
    const power_check *power; // null: updated whatever its battery and supplies are
};

// Returns the row of the unit's model; null when the updater knows none, whose units have no
// prompts and so are not updated.
const unit_model *model_of(const host_info &host);

} // namespace renewer
