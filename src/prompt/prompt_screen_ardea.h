#pragma once

#include "prompt/prompt_funs.h"

// The prompts of a unit with a screen: the colour LCD and the keys. Each prompt has a picture file
// and a built-in picture that stands in for it (see `sa1230_update`, `sa1230_default`). The
// operations run on one thread; from `updating` to the next `success`, `failure` or `notallow` a
// second thread plays the animation, and it alone draws.
namespace renewer {

extern const prompt_funs s_prompt_screen_ardea;

// Opens the key device and the LCD, once: returns at once when both have been tried and the LCD
// is open. Without a key device ("key fd < 0") the set works, but nobody can answer it.
//
// Returns 1; -1, after "open err", when the LCD cannot be opened; the next call then tries again.
int init_screen_ardea();

// Closes the key device; the next `init` opens it and the LCD anew. Always returns 1.
int uninit_screen_ardea();

// Shows the question and waits for the first event of the keys, for at most 120 s. Prints
// "key <code> enter".
//
// Returns 1 when the event is a press of ok; 0 for any other event and for none.
int prompt_confirm_screen_ardea();

// Starts the animation and returns. Prints "updating111<result>" with pthread_create's result.
//
// Returns 1, also when the thread could not be started (reported on standard error).
int prompt_updating_screen_ardea();

// End the animation, which takes up to a second and a picture, show the result and close the LCD,
// which keeps the picture. `notallow` then waits 4 s. All return 1.
int prompt_success_screen_ardea();
int prompt_failure_screen_ardea();
int prompt_notallow_screen_ardea();

// Body of the animation's thread: frames 0 to 128, one a second, and over again from 1; from 0 when
// one is missing. Ends when the animation is ended, or by itself, with the built-in picture on the
// screen, when frame 0 is missing. The argument is ignored, the result is null.
void *lcd_thread_fun_ardea(void *);

} // namespace renewer
