#pragma once

#include <gtest/gtest.h>

#include <string>

// What an operation prints on standard output, in this process or by a command that it runs.
template <typename operation>
std::string printed(operation run) {
    testing::internal::CaptureStdout();
    run();
    return testing::internal::GetCapturedStdout();
}

// The same for standard error.
template <typename operation>
std::string complained(operation run) {
    testing::internal::CaptureStderr();
    run();
    return testing::internal::GetCapturedStderr();
}

// What an operation returns and prints.
struct reply {
    int value;
    std::string out;
    std::string err;
    bool operator==(const reply &) const = default;
};

template <typename operation>
reply reply_of(operation run) {
    reply result = {};
    result.err = complained([&] { result.out = printed([&] { result.value = run(); }); });
    return result;
}
