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

} // namespace renewer
