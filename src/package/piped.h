#pragma once

#include "platform/owner.h"

// A package that comes through a pipe. Used by the package library only.
namespace renewer {

// Makes a stream of something that is not seekable. The stream goes back to any place in the first
// 66 KiB, where the header, the version text and its fill lie, and forward to any; elsewhere going
// back fails.
//
// Takes the descriptor over; empty when there is no memory for the stream.
owned_file open_piped(owned_descriptor input);

} // namespace renewer
