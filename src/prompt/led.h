#pragma once

// The unit's LEDs, through the kernel's LED class: "/sys/class/leds/<name>/brightness" takes the
// brightness as decimal text, 255 the brightest, 0 off (Documentation/leds/leds-class.rst).
namespace renewer {

// Switches one LED on, given its name in sysfs. The file is opened, written and closed each time.
//
// Returns 0; -1 when the file cannot be opened (reported on standard error with the prefix "open",
// then a line on standard output) or written (a line on standard output). A name that is too long
// for any LED of the unit is a file that cannot be opened.
int led_on_by_name(const char *name);

// The same, off.
int led_off_by_name(const char *name);

} // namespace renewer
