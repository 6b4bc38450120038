#pragma once

#include <string>

// Namespaces and mounts of a unit's root (namespaces(7), user_namespaces(7), mount_namespaces(7)).
// Every operation ends the process with a message if the system refuses: half a root is of no use.
namespace simulator {

// Moves this process, which must be single-threaded, into new user and mount namespaces, and into
// the others that `further_flags` names (CLONE_NEWPID and so on), with root's rights in them. Where
// user namespaces are refused, root does without. Mounts made afterwards are visible to this
// process and its children only.
void enter_namespaces(int further_flags);

// Makes a file or directory of the desk visible at the same path below `root`. A link is copied as
// a link; what does not exist on the desk is skipped.
void show(const std::string &root, const std::string &path);

// Makes the desk's programs and libraries visible below `root`, read-only.
void show_system(const std::string &root);

// Makes harmless devices (null, zero, full, urandom) visible below `root`.
void show_devices(const std::string &root);

// Makes `root` the root directory and the working directory of this process.
void change_root(const std::string &root);

// Ends the process with `what` and the system's error text on standard error.
[[noreturn]] void refuse(const std::string &what);

} // namespace simulator
