#pragma once

#include "prompt/prompt_funs.h"

// The prompts of a unit without a screen: six front-panel LEDs and the keys. The operations run on
// one thread; from `updating` to the next `success`, `failure` or `notallow` a second thread blinks
// Light_Charge and Light_Power in turn, each for 0.5 s.
namespace renewer {

extern const prompt_funs s_prompt_led_corvus;

// Opens the key device at the first call ("key fd < 0" when that fails; it is not tried again) and
// lights Light_Static_Data at every call. Always returns 1.
int init_screen_corvus();

// Closes the key device; the next `init` opens it anew. Always returns 1.
int uninit_screen_corvus();

// Asks the user to confirm the update; see `wait_for_confirmation` for the answers.
//
// Returns 1 confirmed; 0 declined, timed out, or the host record cannot be read.
int prompt_confirm_screen_corvus();

// Starts the running indication and returns.
//
// Returns 1, also when its thread could not be started (reported on standard error); 0 when the
// host record cannot be read, with nothing started.
int prompt_updating_screen_corvus();

// Ends the running indication, then shows for 3 s: Light_Charge and Light_Power on a unit whose PN
// characters 4 and 5 are 56 to 59; Light_Static_Data, Light_Gps, Light_Data_Se and Light_Power on
// another.
//
// Returns 1; 0 when the host record cannot be read, with nothing shown.
int prompt_success_screen_corvus();

// Ends the running indication, then flashes Light_Gps, Light_Data_Se and Light_Power three times,
// 1 s on and 1 s off, and waits 3 s. Both always return 1.
int prompt_failure_screen_corvus();
int prompt_notallow_screen_corvus();

// Bodies of the blink thread: they blink until the running indication is ended. The argument is
// ignored, the result is null. `updating` starts led_thread_fun_corvus_bd; led_thread_fun_corvus, a
// light that runs along the panel in steps of 0.2 s, is started by nothing in the program.
void *led_thread_fun_corvus_bd(void *);
void *led_thread_fun_corvus(void *);

// Reads one input event and returns its key code without keeping anything.
//
// Returns the event's code, 10 more for a release; 0 for an event without a code; -1 when nothing
// could be read.
int get_key_code(int fd);

} // namespace renewer
