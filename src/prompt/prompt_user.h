#pragma once

namespace renewer {

// What a set of prompts (LEDs and keys, screen and keys) offers. No operation takes arguments.
struct prompt_funs {
    int (*init)();     // prepare the devices: 1 when ready; may be run again at any time
    int (*uninit)();   // release the devices
    int (*confirm)();  // ask for the update and wait: 1 confirmed, else declined or no answer
    int (*success)();  // show that the update succeeded, and end the running indication
    int (*updating)(); // start the running indication and return: 1 started, else failed
    int (*failure)();  // show that the update failed, and end the running indication
    int (*notallow)(); // show that the update is refused, and end the running indication
};

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
