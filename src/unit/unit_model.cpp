#include "unit/unit_model.h"

#include <array>

namespace renewer {

namespace {

constexpr power_check ardeaplus_power = {.name = "type_ardeaplus", .machine_type = 0};

constexpr std::array unit_models = {
    unit_model{'1', '3', prompt_set::leds, nullptr},
    unit_model{'1', '6', prompt_set::screen, &ardeaplus_power},
};

} // namespace

const unit_model *model_of(const host_info &host) {
    for (const unit_model &model : unit_models) {
        if (host_pn_is(host, 2, model.pn2, model.pn3)) {
            return &model;
        }
    }
    return nullptr;
}

} // namespace renewer
