#pragma once

#include <array>
#include <cstdint>

namespace renewer {

// Entry n is the CRC-32 remainder of the byte n under the reflected polynomial 0xEDB88320
// (IEEE 802.3). Zero until `init_crc_table` has filled it.
extern std::array<uint32_t, 256> crc_table;

void init_crc_table();

// Returns the CRC-32 (IEEE 802.3: reflected, initial value and final XOR all ones) of `len` bytes.
// Fills `crc_table` anew; not for concurrent callers.
uint32_t crc32(const unsigned char *data, unsigned len);

// Compares two dotted version texts by the first component in which they differ, taken as a
// decimal number; a text that is a proper prefix of the other is the older one.
//
// Returns 0 for equal texts and when one of them is null, a negative number when `a` is older, a
// positive one when `a` is newer: the difference of the two numbers, or -1 and 1 for a prefix. A
// difference that an int cannot hold is returned as the nearest int.
int edition_compare(const char *a, const char *b);

} // namespace renewer
