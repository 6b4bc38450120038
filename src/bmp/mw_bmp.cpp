#include "bmp/mw_bmp.h"

#include "bmp/bmp_file.h"

#include <algorithm>
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

constexpr const char no_memory[] = "malloc err";
constexpr const char bad_head[] = "bmp head err";

owned_memory<uint8_t> take_memory(int64_t row_bytes, int height) {
    const bool possible = row_bytes > 0 && height > 0 && row_bytes <= INT_MAX / height;
    return owned_memory<uint8_t>(
        possible ? static_cast<uint8_t *>(malloc(static_cast<size_t>(row_bytes * height)))
                 : nullptr);
}

owned_memory<uint8_t> allocate_rows(int64_t row_bytes, int height) {
    owned_memory<uint8_t> rows = take_memory(row_bytes, height);
    return rows != nullptr ? std::move(rows) : refuse(no_memory);
}

// Rows as they are stored, or what to say of the file.
struct stored_rows {
    owned_memory<uint8_t> rows;
    const char *failure;
};

stored_rows read_rows(int file, int64_t offset, int width, int height, int bytes_per_pixel) {
    if (width < 0 || height < 0) {
        return {nullptr, no_memory};
    }
    if (width == 0 || height == 0 ||
        !bmp_holds_rows(file, offset, width, height, bytes_per_pixel)) {
        return {nullptr, bad_head};
    }
    // Only now, so that a header's claim allocates no more than the file holds.
    owned_memory<uint8_t> rows = take_memory(bmp_stored_row_size(width, bytes_per_pixel), height);
    if (rows == nullptr) {
        return {nullptr, no_memory};
    }
    if (!bmp_read_rows(file, rows.get(), offset, width, height, bytes_per_pixel)) {
        return {nullptr, bad_head};
    }
    return {std::move(rows), nullptr};
}

// The file is closed when this returns.
stored_rows read_file(owned_descriptor file, int *width, int *height, int *bytes_per_pixel) {
    bmp_head head;
    if (!bmp_read(file.get(), head.data(), head.size(), 0) ||
        bmp_number<uint16_t>(head, bmp_field_signature) != bmp_signature) {
        return {nullptr, bad_head};
    }
    const int bits_per_pixel = bmp_number<uint16_t>(head, bmp_field_bits_per_pixel);
    if (bits_per_pixel < bmp_lowest_bits_per_pixel) {
        return {nullptr, "bmp bit count err"};
    }
    *width = bmp_number<int32_t>(head, bmp_field_width);
    *height = bmp_number<int32_t>(head, bmp_field_height);
    *bytes_per_pixel = bits_per_pixel / 8;
    return read_rows(file.get(), bmp_number<uint32_t>(head, bmp_field_data_offset), *width, *height,
                     *bytes_per_pixel);
}

void convert_pixels(const uint8_t *in, uint8_t *out, int64_t count) {
    for (int64_t i = 0; i < count; ++i) {
        const unsigned blue = in[3 * i], green = in[3 * i + 1], red = in[3 * i + 2];
        // RGB565, the high byte first, as the panel takes it.
        out[2 * i] = static_cast<uint8_t>((red & 0xF8) | green >> 5);
        out[2 * i + 1] = static_cast<uint8_t>((green << 3 & 0xE0) | blue >> 3);
    }
}

// Does in place what `bmp_to_buff`, `rgb888_to_rgb565` and `bmp_bottom_to_top` do one after the
// other. This works because no pixel is written before it was read.
void narrow_and_turn(uint8_t *rows, int width, int height) {
    const int64_t stored_size = bmp_stored_row_size(width, rgb888_size);
    const int64_t size = bmp_row_size(width, rgb565_size);
    for (int64_t row = 0; row < height; ++row) {
        convert_pixels(rows + row * stored_size, rows + row * size, width);
    }
    for (int64_t top = 0, bottom = height - 1; top < bottom; ++top, --bottom) {
        std::swap_ranges(rows + top * size, rows + (top + 1) * size, rows + bottom * size);
    }
}

// `offset_of` returns the offset in `in` of a row of the result.
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
    owned_descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    if (!file) {
        printf("open %s failed\n", path);
        return {};
    }
    stored_rows stored = read_file(std::move(file), width, height, bytes_per_pixel);
    return stored.rows != nullptr ? std::move(stored.rows) : refuse(stored.failure);
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
    convert_pixels(in, pixels.get(), bmp_row_size(width, 1) * height);
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
    if (bytes_per_pixel != rgb888_size) {
        printf("bit count is %d\n", bytes_per_pixel);
        return {};
    }
    narrow_and_turn(rows.get(), *width, *height);
    return rows;
}

} // namespace renewer
