#pragma once

#include "platform/owner.h"

// A package that comes through a pipe. For the package library alone.
namespace renewer {

// Makes a stream of something that cannot be sought in. The stream goes back to any place in the
// first 66 KiB, where the header, the version text and its fill lie, and forward to any; elsewhere
// going back fails.
//
// Takes the descriptor over; empty when there is no memory for the stream.
owned_file open_piped(owned_descriptor input);

} // namespace renewer
