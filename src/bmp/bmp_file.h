#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

// What the loaders of BMP files share. Nothing here prints.
namespace renewer {

constexpr uint16_t bmp_signature = 0x4D42;
constexpr int bmp_lowest_bits_per_pixel = 24;

// BITMAPFILEHEADER and BITMAPINFOHEADER as they lie at the start of the file, numbers
// little-endian, and where in them to find what the loaders use.
using bmp_head = std::array<uint8_t, 14 + 40>;
enum bmp_field : size_t {
    bmp_field_signature = 0,
    bmp_field_data_offset = 10,
    bmp_field_width = 18,
    bmp_field_height = 22,
    bmp_field_bits_per_pixel = 28,
};

template <typename T>
T bmp_number(const bmp_head &head, bmp_field offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) {
        value |= static_cast<uint32_t>(head[offset + i]) << (8 * i);
    }
    return static_cast<T>(value);
}

// Bytes of a row without its padding, and as it is stored, padded to a multiple of 4.
inline int64_t bmp_row_size(int width, int bytes_per_pixel) {
    return static_cast<int64_t>(width) * bytes_per_pixel;
}

inline int64_t bmp_stored_row_size(int width, int bytes_per_pixel) {
    return (bmp_row_size(width, bytes_per_pixel) + 3) / 4 * 4;
}

// Reads `size` bytes at `offset`; false when the file ends before.
inline bool bmp_read(int file, uint8_t *to, size_t size, int64_t offset) {
    return pread(file, to, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

// Bytes of padding after each stored row. Those after the last row may be missing from the file.
inline int64_t bmp_padding(int width, int bytes_per_pixel) {
    return bmp_stored_row_size(width, bytes_per_pixel) - bmp_row_size(width, bytes_per_pixel);
}

// Whether a file is long enough for its rows (of at least one pixel) from `offset` on.
inline bool bmp_holds_rows(int file, int64_t offset, int width, int height, int bytes_per_pixel) {
    struct stat about;
    return fstat(file, &about) == 0 && about.st_size >= offset &&
           (about.st_size - offset + bmp_padding(width, bytes_per_pixel)) /
                   bmp_stored_row_size(width, bytes_per_pixel) >=
               height;
}

// Reads the rows as they are stored, with their padding; missing padding is zero. Returns false if
// more than that is missing.
inline bool bmp_read_rows(int file, uint8_t *to, int64_t offset, int width, int height,
                          int bytes_per_pixel) {
    const auto size = static_cast<size_t>(bmp_stored_row_size(width, bytes_per_pixel) * height);
    const auto padding = static_cast<size_t>(bmp_padding(width, bytes_per_pixel));
    memset(to + size - padding, 0, padding);
    return pread(file, to, size, static_cast<off_t>(offset)) >=
           static_cast<ssize_t>(size - padding);
}

} // namespace renewer
