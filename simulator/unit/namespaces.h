#pragma once

#include <string>

// Namespaces and mounts of a unit's root (namespaces(7), user_namespaces(7), mount_namespaces(7)).
// Every operation ends the process with a message when the system refuses: half a root is none.
namespace simulator {

// Moves this process, which must have one thread, into new user and mount namespaces and into the
// others that `further_flags` names (CLONE_NEWPID and so on), as their root; root does without a
// user namespace where those are refused. Mounts made from then on are seen by this process and its
// children only.
void enter_namespaces(int further_flags);

// Shows a file or directory of the desk at the same path below `root`; a link is copied as a link,
// and what does not exist on the desk is passed over.
void show(const std::string &root, const std::string &path);

// Shows the desk's programs and libraries below `root`, to be read only.
void show_system(const std::string &root);

// Shows the harmless devices (null, zero, full, urandom) below `root`.
void show_devices(const std::string &root);

// Makes `root` the root directory and the working directory of this process.
void change_root(const std::string &root);

// Ends the process with `what` and the system's error text on standard error.
[[noreturn]] void refuse(const std::string &what);

} // namespace simulator
