#pragma once

namespace renewer {

// Blinks the five status LEDs together and waits for the user's answer on the keys of `key_fd`
// (see `key_open`; -1 for none), until about 120 s have passed in silence. The five are off when it
// returns.
//
// Confirmed by the ok key, pressed or released, or by the power key (on this panel the key with
// event code 3) released once and not again within 2 s; declined by the second release, by silence
// and by a failing wait. A key device that ends or fails is tried again every 300 ms.
//
// Returns 1 confirmed, 0 declined. Prints "get a key" and the lines of `key_get` for each event,
// and a line when the power key alone has confirmed.
int wait_for_confirmation(int key_fd);

} // namespace renewer
