#pragma once

// The protocol between the library at the system-call boundary and the desk.
namespace simulator {

// Path of the desk's datagram socket within the unit. A record is "<kind> <text>", where the kind
// is one of event_kind or: "memory <KiB>" (the program's peak), "level <node> <number>" (a panel's
// data/command line), "transfer <node> <bytes>" (one SPI transfer, raw bytes), "ended <command
// line>" (a command of the shell has ended).
constexpr const char record_path[] = "/.simulator/record";

// Prefix of records that are sent by a thread other than the main thread.
constexpr const char thread_mark[] = "thread ";

// How many times faster the unit's clock runs than the desk's.
constexpr const char speed_variable[] = "SIMULATOR_SPEED";

// Set for the program under observation, but not for what it starts.
constexpr const char program_variable[] = "SIMULATOR_PROGRAM";

// "<count> <text>": the first <count> attempts to start a shell for a command that begins with
// <text> fail.
constexpr const char shell_failures_variable[] = "SIMULATOR_SHELL_FAILURES";

// If this file exists, writes to files below the path that it contains fail.
constexpr const char full_disk_path[] = "/.simulator/full";

// How many SPI transfers succeed before all others fail; if not set, all succeed.
constexpr const char spi_transfers_variable[] = "SIMULATOR_SPI_TRANSFERS";

} // namespace simulator
