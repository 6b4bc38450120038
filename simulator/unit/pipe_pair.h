#pragma once

#include "platform/owner.h"
#include "simulator/unit/failure.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace simulator {

// A pipe of the desk that is not inherited by the programs it starts.
struct pipe_pair {
    pipe_pair() : pipe_pair(make_pipe()) {}

    renewer::owned_descriptor read_end;
    renewer::owned_descriptor write_end;

private:
    explicit pipe_pair(std::array<int, 2> ends) : read_end(ends[0]), write_end(ends[1]) {}

    static std::array<int, 2> make_pipe() {
        std::array<int, 2> ends;
        if (pipe2(ends.data(), O_CLOEXEC) != 0) {
            fail("pipe");
        }
        return ends;
    }
};

} // namespace simulator
