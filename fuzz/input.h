#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

// Shared by the fuzzers. They run in a unit's root, with standard output discarded (begin.cpp).
namespace fuzz {

constexpr const char *input_path = "/tmp/input";

// Writes the input to a file.
inline void put_input(std::string_view input, const char *path = input_path) {
    FILE *const file = fopen(path, "w");
    if (file == nullptr || fwrite(input.data(), 1, input.size(), file) != input.size() ||
        fclose(file) != 0) {
        perror(path);
        abort();
    }
}

inline std::string_view text_of(const uint8_t *data, size_t size) {
    return {reinterpret_cast<const char *>(data), size};
}

// Ends the fuzzer with the input that broke a promise.
inline void expect(bool kept) {
    if (!kept) {
        abort();
    }
}

} // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
