#pragma once

// What the library at the system-call boundary and the desk agree on.
namespace simulator {

// The desk's datagram socket, by its path in the unit. A record is "<kind> <text>", with the kinds
// of event_kind, or one of "memory <KiB>" (the program's peak), "level <node> <number>" (a panel's
// data/command line), "transfer <node> <bytes>" (one SPI transfer, the bytes as they are) and
// "ended <command line>" (one that was handed to the shell).
constexpr const char record_path[] = "/.simulator/record";

// Stands before the records of a thread that is not its process's first.
constexpr const char thread_mark[] = "thread ";

// How many times faster than the desk's the unit's clock runs.
constexpr const char speed_variable[] = "SIMULATOR_SPEED";

// Set for the program that is under observation, not for what it starts.
constexpr const char program_variable[] = "SIMULATOR_PROGRAM";

// "<count> <text>": so many times no shell can be started for a command that begins with the text.
constexpr const char shell_failures_variable[] = "SIMULATOR_SHELL_FAILURES";

// When this file is there, nothing can be written to files below the path that it holds.
constexpr const char full_disk_path[] = "/.simulator/full";

// How many SPI transfers work before all others fail; not set: all work.
constexpr const char spi_transfers_variable[] = "SIMULATOR_SPI_TRANSFERS";

} // namespace simulator
