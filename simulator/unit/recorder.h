#pragma once

#include "platform/owner.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace simulator {

// The socket that all output and all records of a unit come to, in the order in which they were
// sent: each write is one datagram, and the sender's address tells which it is.
class recorder {
public:
    // Throws when the socket cannot be made at `path`.
    explicit recorder(const std::filesystem::path &path);

    // What the program gets as its standard output and standard error.
    int output() const { return out.get(); }
    int errors() const { return err.get(); }

    // Becomes readable when something has come in.
    int incoming() const { return receiver.get(); }

    enum class source { none, output, errors, record };

    // Takes the next of what has come in; `source::none` when there is nothing. The text stands
    // until the next call.
    source take(std::string_view &text);

private:
    renewer::owned_descriptor receiver;
    renewer::owned_descriptor out;
    renewer::owned_descriptor err;
    std::string out_address;
    std::string err_address;
    std::string taken;
};

} // namespace simulator
