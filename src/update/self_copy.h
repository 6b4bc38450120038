#pragma once

namespace renewer {

// Copies the updater that came with the update, "/firmware/renewer.bin", to
// "/data/sbin/update/renewer" and "/data/sbin/renewer", by the shell. The first is on its medium
// before the second is begun, so that a power cut leaves one of them whole.
//
// If a command fails (the updater runs from there, no room, a failing medium), the file is replaced
// as a whole; without room for that, the previous one is kept or restored. None of this is printed
// or returned.
void copy_own_update();

// Removes what an interrupted run has left beside the two.
void remove_unfinished_own_update();

} // namespace renewer
