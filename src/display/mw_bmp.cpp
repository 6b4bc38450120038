#include "display/mw_bmp.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace renewer {

namespace {

constexpr uint16_t bmp_signature = 0x4D42;
constexpr int lowest_bits_per_pixel = 24;
constexpr int rgb888_size = 3;
constexpr int rgb565_size = 2;

// Both headers as they lie at the start of the file.
using bmp_head = std::array<uint8_t, 14 + 40>;

template <typename T>
T little_endian(const bmp_head &head, size_t offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < sizeof(T); ++i) {
        value |= static_cast<uint32_t>(head[offset + i]) << (8 * i);
    }
    return static_cast<T>(value);
}

int64_t row_size(int width, int bytes_per_pixel) {
    return static_cast<int64_t>(width) * bytes_per_pixel;
}

int64_t stored_row_size(int width, int bytes_per_pixel) {
    return (row_size(width, bytes_per_pixel) + 3) / 4 * 4;
}

bool read_whole(int file, uint8_t *to, size_t size, int64_t offset) {
    return pread(file, to, size, static_cast<off_t>(offset)) == static_cast<ssize_t>(size);
}

bool file_holds_rows(int file, int64_t offset, int64_t row_bytes, int height) {
    struct stat about;
    return fstat(file, &about) == 0 && about.st_size >= offset &&
           (about.st_size - offset) / row_bytes >= height;
}

owned_memory<uint8_t> refuse(const char *message) {
    puts(message);
    return {};
}

owned_memory<uint8_t> allocate_rows(int64_t row_bytes, int height) {
    if (row_bytes <= 0 || height <= 0 || row_bytes > INT_MAX / height) {
        return refuse("malloc err");
    }
    owned_memory<uint8_t> rows(
        static_cast<uint8_t *>(malloc(static_cast<size_t>(row_bytes * height))));
    return rows != nullptr ? std::move(rows) : refuse("malloc err");
}

owned_memory<uint8_t> read_rows(int file, int64_t offset, int width, int height,
                                int bytes_per_pixel) {
    if (width < 0 || height < 0) {
        return refuse("malloc err");
    }
    const int64_t row_bytes = stored_row_size(width, bytes_per_pixel);
    if (width == 0 || height == 0 || !file_holds_rows(file, offset, row_bytes, height)) {
        return refuse("bmp head err");
    }
    owned_memory<uint8_t> rows = allocate_rows(row_bytes, height);
    if (rows == nullptr) {
        return rows;
    }
    const auto size = static_cast<size_t>(row_bytes * height);
    return read_whole(file, rows.get(), size, offset) ? std::move(rows) : refuse("bmp head err");
}

void convert_pixels(const uint8_t *in, uint8_t *out, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
        const unsigned blue = in[3 * i], green = in[3 * i + 1], red = in[3 * i + 2];
        out[2 * i] = static_cast<uint8_t>((red & 0xF8) | green >> 5);
        out[2 * i + 1] = static_cast<uint8_t>((green << 3 & 0xE0) | blue >> 3);
    }
}

// Makes of stored rows, in their place, what `bmp_to_buff`, `rgb888_to_rgb565` and
// `bmp_bottom_to_top` make of them one after the other. No pixel is written before it was read.
void narrow_and_turn(uint8_t *rows, int width, int height) {
    const int64_t stored_size = stored_row_size(width, rgb888_size);
    const int64_t size = row_size(width, rgb565_size);
    for (int64_t row = 0; row < height; ++row) {
        convert_pixels(rows + row * stored_size, rows + row * size, width);
    }
    for (int64_t top = 0, bottom = height - 1; top < bottom; ++top, --bottom) {
        std::swap_ranges(rows + top * size, rows + (top + 1) * size, rows + bottom * size);
    }
}

// `offset_of` tells where in `in` each row of the result comes from.
template <typename row_offset>
owned_memory<uint8_t> copy_rows(const uint8_t *in, int64_t row_bytes, int height,
                                row_offset offset_of) {
    if (in == nullptr) {
        return refuse("in is null");
    }
    owned_memory<uint8_t> rows = allocate_rows(row_bytes, height);
    for (int64_t row = 0; rows != nullptr && row < height; ++row) {
        memcpy(rows.get() + row * row_bytes, in + offset_of(row), static_cast<size_t>(row_bytes));
    }
    return rows;
}

} // namespace

owned_memory<uint8_t> read_bmp(const char *path, int *width, int *height, int *bytes_per_pixel) {
    const owned_descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file) {
        printf("open %s failed\n", path);
        return {};
    }
    bmp_head head;
    if (!read_whole(file.get(), head.data(), head.size(), 0) ||
        little_endian<uint16_t>(head, 0) != bmp_signature) {
        return refuse("bmp head err");
    }
    const int bits_per_pixel = little_endian<uint16_t>(head, 28);
    if (bits_per_pixel < lowest_bits_per_pixel) {
        return refuse("bmp bit count err");
    }
    *width = little_endian<int32_t>(head, 18);
    *height = little_endian<int32_t>(head, 22);
    *bytes_per_pixel = bits_per_pixel / 8;
    return read_rows(file.get(), little_endian<uint32_t>(head, 10), *width, *height,
                     *bytes_per_pixel);
}

owned_memory<uint8_t> bmp_to_buff(const uint8_t *in, int width, int height, int bytes_per_pixel) {
    const int64_t stored = stored_row_size(width, bytes_per_pixel);
    return copy_rows(in, row_size(width, bytes_per_pixel), height,
                     [stored](int64_t row) { return row * stored; });
}

owned_memory<uint8_t> rgb888_to_rgb565(const uint8_t *in, int width, int height) {
    if (in == nullptr) {
        return refuse("in is null");
    }
    owned_memory<uint8_t> pixels = allocate_rows(row_size(width, rgb565_size), height);
    if (pixels == nullptr) {
        return pixels;
    }
    convert_pixels(in, pixels.get(), row_size(width, 1) * height);
    return pixels;
}

owned_memory<uint8_t> bmp_bottom_to_top(const uint8_t *in, int width, int height,
                                        int bytes_per_pixel) {
    const int64_t size = row_size(width, bytes_per_pixel);
    return copy_rows(in, size, height,
                     [size, height](int64_t row) { return (height - 1 - row) * size; });
}

owned_memory<uint8_t> read_bmp_rgb565(const char *path, int *width, int *height) {
    if (path == nullptr || width == nullptr || height == nullptr) {
        return refuse("input point is null");
    }
    int bytes_per_pixel = 0;
    owned_memory<uint8_t> rows = read_bmp(path, width, height, &bytes_per_pixel);
    if (rows == nullptr) {
        return refuse("read bmp err");
    }
    if (bytes_per_pixel != rgb888_size) {
        printf("bit count is %d\n", bytes_per_pixel);
        return {};
    }
    narrow_and_turn(rows.get(), *width, *height);
    return rows;
}

} // namespace renewer
