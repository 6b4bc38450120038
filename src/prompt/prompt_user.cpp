#include "prompt/prompt_user.h"

#include "prompt/prompt_funs.h"
#include "prompt/prompt_led_corvus.h"
#include "prompt/prompt_screen_ardea.h"
#include "unit/host_info.h"
#include "unit/unit_model.h"

#include <array>

namespace renewer {

namespace {

// By `prompt_set`.
constexpr std::array prompt_sets = {&s_prompt_led_corvus, &s_prompt_screen_ardea};

using prompt_operation = int (*)();

// In the order of the prompt numbers, from PROMPT_CONFIRM on.
constexpr std::array<prompt_operation prompt_funs::*, PROMPT_INIT> slots = {
    &prompt_funs::confirm, &prompt_funs::success,  &prompt_funs::updating,
    &prompt_funs::failure, &prompt_funs::notallow, &prompt_funs::init,
};

const prompt_funs *s_prompt_funs = nullptr;

const prompt_funs *prompt_set_of(const host_info &host) {
    const unit_model *const model = model_of(host);
    return model == nullptr ? nullptr : prompt_sets[static_cast<size_t>(model->prompts)];
}

} // namespace

int prompt_user(int number) {
    host_info host;
    if (!read_host_or_report(host)) {
        return 0;
    }
    s_prompt_funs = prompt_set_of(host);
    if (s_prompt_funs == nullptr) {
        return 0;
    }
    // Every prompt needs the devices, and `init` may be repeated. Its result is that of
    // PROMPT_INIT, which calls it once more through the table.
    s_prompt_funs->init();
    if (number < PROMPT_CONFIRM || number > PROMPT_INIT) {
        return 0;
    }
    const prompt_operation operation = s_prompt_funs->*slots[static_cast<size_t>(number - 1)];
    return operation == nullptr ? 0 : operation();
}

} // namespace renewer
