#pragma once

// A root directory of a unit for tests that call the program's own functions.
namespace simulator {

// Moves this process (which must be single-threaded) into an empty unit: its own user and mount
// namespaces and a root in memory, where /update, /firmware, /data, /reserve, /media, /mnt, /tmp,
// /dev, /sys, /run and /etc are empty and writable, and the system's programs and libraries are
// read-only. From then on nothing outside can be changed, and everything written is gone with the
// process. Does nothing in a process that is already in such a root.
//
// Ends the process with a message if the system does not allow it.
void enter_unit_root();

} // namespace simulator
