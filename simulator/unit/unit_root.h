#pragma once

// A root directory of a unit for tests that call the program's own functions.
namespace simulator {

// Moves this process (which must have one thread) into an empty unit: user and mount namespaces of
// its own, a root in memory in which /update, /firmware, /data, /reserve, /media, /mnt, /tmp, /dev,
// /sys, /run and /etc are the unit's and can be written, and the system's programs and libraries
// are there to be read. Nothing outside can be changed from then on, and all that was written is
// gone with the process. Does nothing in a process that is already in such a root.
//
// Ends the process with a message when the system does not allow it.
void enter_unit_root();

} // namespace simulator
