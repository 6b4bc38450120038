#include "display/mw_bmp.h"

#include "display/bmp_file.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <utility>

namespace renewer {

namespace {

constexpr int rgb888_size = 3;
constexpr int rgb565_size = 2;

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
    const int64_t row_bytes = bmp_stored_row_size(width, bytes_per_pixel);
    if (width == 0 || height == 0 || !bmp_holds_rows(file, offset, row_bytes, height)) {
        return refuse("bmp head err");
    }
    owned_memory<uint8_t> rows = allocate_rows(row_bytes, height);
    if (rows == nullptr) {
        return rows;
    }
    const auto size = static_cast<size_t>(row_bytes * height);
    return bmp_read(file, rows.get(), size, offset) ? std::move(rows) : refuse("bmp head err");
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
    if (!bmp_read(file.get(), head.data(), head.size(), 0) ||
        bmp_number<uint16_t>(head, bmp_field_signature) != bmp_signature) {
        return refuse("bmp head err");
    }
    const int bits_per_pixel = bmp_number<uint16_t>(head, bmp_field_bits_per_pixel);
    if (bits_per_pixel < bmp_lowest_bits_per_pixel) {
        return refuse("bmp bit count err");
    }
    *width = bmp_number<int32_t>(head, bmp_field_width);
    *height = bmp_number<int32_t>(head, bmp_field_height);
    *bytes_per_pixel = bits_per_pixel / 8;
    return read_rows(file.get(), bmp_number<uint32_t>(head, bmp_field_data_offset), *width, *height,
                     *bytes_per_pixel);
}

owned_memory<uint8_t> bmp_to_buff(const uint8_t *in, int width, int height, int bytes_per_pixel) {
    const int64_t stored = bmp_stored_row_size(width, bytes_per_pixel);
    return copy_rows(in, bmp_row_size(width, bytes_per_pixel), height,
                     [stored](int64_t row) { return row * stored; });
}

owned_memory<uint8_t> rgb888_to_rgb565(const uint8_t *in, int width, int height) {
    if (in == nullptr) {
        return refuse("in is null");
    }
    owned_memory<uint8_t> pixels = allocate_rows(bmp_row_size(width, rgb565_size), height);
    if (pixels == nullptr) {
        return pixels;
    }
    uint8_t *out = pixels.get();
    const uint8_t *const end = out + bmp_row_size(width, rgb565_size) * height;
    for (; out != end; out += rgb565_size, in += rgb888_size) {
        const unsigned blue = in[0], green = in[1], red = in[2];
        out[0] = static_cast<uint8_t>((red & 0xF8) | green >> 5);
        out[1] = static_cast<uint8_t>((green << 3 & 0xE0) | blue >> 3);
    }
    return pixels;
}

owned_memory<uint8_t> bmp_bottom_to_top(const uint8_t *in, int width, int height,
                                        int bytes_per_pixel) {
    const int64_t size = bmp_row_size(width, bytes_per_pixel);
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
    if (bmp_row_size(*width, bytes_per_pixel) % 4 != 0) {
        rows = bmp_to_buff(rows.get(), *width, *height, bytes_per_pixel);
    }
    if (bytes_per_pixel != rgb888_size) {
        printf("bit count is %d\n", bytes_per_pixel);
        return {};
    }
    rows = rgb888_to_rgb565(rows.get(), *width, *height);
    if (rows == nullptr) {
        return refuse("rgb888 to rgb565 err");
    }
    rows = bmp_bottom_to_top(rows.get(), *width, *height, rgb565_size);
    return rows != nullptr ? std::move(rows) : refuse("bmp bottom to top err");
}

} // namespace renewer
