#pragma once

#include "platform/owner.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace simulator {

// The socket that receives all output and all records of a unit in the order in which they were
// sent. Each write is one datagram; the sender's address identifies the stream.
class recorder {
public:
    // Throws if the socket cannot be made at `path`.
    explicit recorder(const std::filesystem::path &path);

    // Descriptors for the program's standard output and standard error.
    int output() const { return out.get(); }
    int errors() const { return err.get(); }

    // A descriptor that becomes readable when something has arrived.
    int incoming() const { return receiver.get(); }

    enum class source { none, output, errors, record };

    // Takes the next datagram; returns `source::none` if there is none. The text is valid until the
    // next call.
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
