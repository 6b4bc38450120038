#include "package/common.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>

namespace renewer {

namespace {

constexpr uint32_t reflected_polynomial = 0xEDB88320;

// Numbers beyond 64 bits count as the largest or smallest that they hold, as strtoll returns them.
int number_difference(const char *a, const char *b) {
    const long long first = strtoll(a, nullptr, 10);
    const long long second = strtoll(b, nullptr, 10);
    long long difference = 0;
    if (__builtin_sub_overflow(first, second, &difference)) {
        return first > second ? INT_MAX : INT_MIN;
    }
    return static_cast<int>(std::clamp<long long>(difference, INT_MIN, INT_MAX));
}

} // namespace

std::array<uint32_t, 256> crc_table;

void init_crc_table() {
    for (uint32_t n = 0; n < crc_table.size(); ++n) {
        uint32_t remainder = n;
        for (int bit = 0; bit < 8; ++bit) {
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? reflected_polynomial : 0);
        }
        crc_table[n] = remainder;
    }
}

uint32_t crc32(const unsigned char *data, unsigned len) {
    init_crc_table();
    uint32_t crc = 0xFFFFFFFF;
    for (unsigned i = 0; i < len; ++i) {
        crc = crc_table[(crc ^ data[i]) & 0xFF] ^ (crc >> 8);
    }
    return crc ^ 0xFFFFFFFF;
}

int edition_compare(const char *a, const char *b) {
    if (a == nullptr || b == nullptr) {
        return 0;
    }
    size_t component = 0; // where the component begins in both texts
    size_t i = 0;
    while (a[i] != '\0' && a[i] == b[i]) {
        ++i;
        if (a[i] == '.') {
            component = i + 1;
        }
    }
    if (a[i] == b[i]) {
        return 0;
    }
    // A text that is the beginning of the other one is the older edition.
    if (a[i] == '\0') {
        return -1;
    }
    if (b[i] == '\0') {
        return 1;
    }
    return number_difference(a + component, b + component);
}

} // namespace renewer
