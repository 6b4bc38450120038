#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

// Input events as the key device sends them: 16 bytes, little-endian.
inline const std::filesystem::path key_device = "/dev/input/event1";

using event_bytes = std::string;

inline event_bytes event_of(uint16_t code, int32_t value, int32_t seconds = 0,
                            int32_t microseconds = 0, uint16_t type = 1) {
    event_bytes bytes;
    const auto put = [&bytes](uint32_t number, int size) {
        for (int i = 0; i < size; ++i) {
            bytes += static_cast<char>(number >> (8 * i) & 0xFF);
        }
    };
    put(static_cast<uint32_t>(seconds), 4);
    put(static_cast<uint32_t>(microseconds), 4);
    put(type, 2);
    put(code, 2);
    put(static_cast<uint32_t>(value), 4);
    return bytes;
}
