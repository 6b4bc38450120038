#include "oled/ssd1327zb_draw_bmp.h"

#include "bmp/bmp_file.h"
#include "oled/ssd1327zb_pixels.h"
#include "platform/owner.h"

#include <climits>
#include <cstdio>
#include <fcntl.h>

namespace renewer {

namespace {

constexpr int grey_source_size = 3; // blue, green, red

owned_memory<uint8_t> allocate(int64_t size) {
    return owned_memory<uint8_t>(size > 0 && size <= INT_MAX
                                     ? static_cast<uint8_t *>(malloc(static_cast<size_t>(size)))
                                     : nullptr);
}

owned_memory<uint8_t> ReadBmp(const char *path, int32_t *width, int32_t *height,
                              int32_t *bytes_per_pixel) {
    const owned_descriptor file(path != nullptr ? open(path, O_RDONLY | O_CLOEXEC) : -1);
    if (!file) {
        printf("open %s failed\n", path != nullptr ? path : "(null)");
        return {};
    }
    puts(path);
    bmp_head head;
    if (!bmp_read(file.get(), head.data(), head.size(), 0) ||
        bmp_number<uint16_t>(head, bmp_field_signature) != bmp_signature) {
        return {};
    }
    const int bits_per_pixel = bmp_number<uint16_t>(head, bmp_field_bits_per_pixel);
    if (bits_per_pixel < bmp_lowest_bits_per_pixel) {
        return {};
    }
    *width = bmp_number<int32_t>(head, bmp_field_width);
    *height = bmp_number<int32_t>(head, bmp_field_height);
    *bytes_per_pixel = bits_per_pixel / 8;
    if (*width <= 0 || *height <= 0 || *width > UINT16_MAX || *height > UINT16_MAX ||
        !bmp_holds_rows(file.get(), head.size(), *width, *height, *bytes_per_pixel)) {
        return {};
    }
    owned_memory<uint8_t> rows = allocate(bmp_stored_row_size(*width, *bytes_per_pixel) * *height);
    const bool read = rows != nullptr && bmp_read_rows(file.get(), rows.get(), head.size(), *width,
                                                       *height, *bytes_per_pixel);
    return read ? std::move(rows) : owned_memory<uint8_t>();
}

// Stored rows of colours, the bottom one first, become rows of grey levels from the top.
owned_memory<uint8_t> pixel_rearrange_merge(int32_t width, int32_t height, int32_t bytes_per_pixel,
                                            const uint8_t *rows) {
    if (bytes_per_pixel != grey_source_size) {
        return {};
    }
    owned_memory<uint8_t> grey = allocate(int64_t{width} * height);
    if (grey == nullptr) {
        return grey;
    }
    const int64_t row_size = bmp_stored_row_size(width, bytes_per_pixel);
    uint8_t *to = grey.get();
    for (int64_t row = height - 1; row >= 0; --row) {
        const uint8_t *from = rows + row * row_size;
        for (int32_t column = 0; column < width; ++column, from += grey_source_size) {
            // The mean of three colours, reduced from 8 bits to 4: / 3 / 16.
            *to++ = static_cast<uint8_t>((from[0] + from[1] + from[2]) / 48);
        }
    }
    return grey;
}

int tmp2buffer(int x, int y, int width, int height, const uint8_t *grey, uint8_t *pixels,
               uint32_t flags) {
    for (int row = 0; row < height; ++row) {
        // A picture is opaque, so the other flags do not apply.
        ssd1327zb_draw_levels(pixels, (y + row) * ssd1327zb_width + x, grey + row * width, width,
                              flags & ssd1327zb_draw_inverted);
    }
    return 0;
}

} // namespace

bmpbuf *ssd1327zb_bmp_to_bmpbuf(const char *path) {
    int32_t width = 0;
    int32_t height = 0;
    int32_t bytes_per_pixel = 0;
    owned_memory<uint8_t> rows = ReadBmp(path, &width, &height, &bytes_per_pixel);
    if (rows == nullptr) {
        return nullptr;
    }
    owned_memory<uint8_t> grey = pixel_rearrange_merge(width, height, bytes_per_pixel, rows.get());
    rows.reset();
    owned_memory<bmpbuf> picture(grey != nullptr ? static_cast<bmpbuf *>(malloc(sizeof(bmpbuf)))
                                                 : nullptr);
    if (picture == nullptr) {
        return nullptr;
    }
    *picture = {static_cast<uint16_t>(width), static_cast<uint16_t>(height), grey.release()};
    return picture.release();
}

int ssd1327zb_draw_bmpbuf_on_canvas(const bmpbuf *picture, canvas *frame, const box *area,
                                    uint32_t flags) {
    if (picture == nullptr || picture->buf == nullptr || !ssd1327zb_has_pixels(frame) ||
        ssd1327zb_check_box(area) != 0 || area->width > picture->width ||
        area->height > picture->height) {
        return -1;
    }
    return tmp2buffer(area->x, area->y, area->width, area->height, picture->buf, frame->buf, flags);
}

void ssd1327zb_destory_bmpbuf(bmpbuf **picture) {
    if (picture == nullptr || *picture == nullptr) {
        return;
    }
    free((*picture)->buf);
    free(*picture);
    *picture = nullptr;
}

} // namespace renewer
