#pragma once

namespace renewer {

enum prompt_number : int {
    PROMPT_CONFIRM = 1,
    PROMPT_SUCCESS = 2,
    PROMPT_UPDATING = 3,
    PROMPT_FAILURE = 4,
    PROMPT_NOTALLOW = 5,
    PROMPT_INIT = 6,
};

// Runs one prompt of the set that fits the unit's model, which is read afresh each time: first the
// set's `init`, whose result is dropped, then the operation that `number` names (so PROMPT_INIT
// runs `init` twice). No number runs `uninit`.
//
// Returns the operation's result; 0 when none was run: the host record cannot be read
// ("get_local_host_info() failure" on standard error), the model has no prompt set (nothing is
// touched), or `number` names no operation (after `init`).
int prompt_user(int number);

} // namespace renewer
