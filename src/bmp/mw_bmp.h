#pragma once

#include "platform/owner.h"

#include <cstdint>

// Pictures from uncompressed 24-bit BMP files (Windows BITMAPFILEHEADER and BITMAPINFOHEADER, all
// numbers little-endian) as the colour LCD takes them.
//
// Every operation returns a new buffer, which the caller owns, empty on failure, and prints on
// standard output why it failed. Widths and heights are in pixels. A picture of more than `INT_MAX`
// bytes is refused as one for which there is no memory.
namespace renewer {

// Reads the rows of the file at `path` as they are stored: bottom row first, each padded to a
// multiple of 4 bytes; padding that is missing after the last row is zero. `width`, `height` and
// `bytes_per_pixel` are set as soon as the file has turned out to be a BMP file of at least 24 bits
// a pixel, and stay set when a later step fails.
//
// Prints "open <path> failed", "bmp head err" (no BMP file, one without pixels, or one that ends
// before its headers or its pixels do), "bmp bit count err" (less than 24 bits a pixel) or
// "malloc err" (negative sizes, as of a file whose top row comes first, or no memory).
owned_memory<uint8_t> read_bmp(const char *path, int *width, int *height, int *bytes_per_pixel);

// Copies stored rows without their padding. Prints "in is null" or "malloc err".
owned_memory<uint8_t> bmp_to_buff(const uint8_t *in, int width, int height, int bytes_per_pixel);

// Converts pixels of three bytes (blue, green, red) to pixels of two, high byte first: red in bits
// 15 to 11, green in 10 to 5, blue in 4 to 0; the low bits of each colour are dropped. Prints "in
// is null" or "malloc err".
owned_memory<uint8_t> rgb888_to_rgb565(const uint8_t *in, int width, int height);

// Copies rows without padding in reverse order. Prints "in is null" or "malloc err".
owned_memory<uint8_t> bmp_bottom_to_top(const uint8_t *in, int width, int height,
                                        int bytes_per_pixel);

// Loads a picture of 24 bits a pixel: `width` x `height` pixels of two bytes, high byte first, top
// row first, without padding. The result is that of the operations above, one after the other, but
// made in place of the stored rows, so only the reading needs memory.
//
// Prints "input point is null"; what `read_bmp` says and then "read bmp err"; or "bit count is <n>"
// with the bytes of a pixel when they are not three.
owned_memory<uint8_t> read_bmp_rgb565(const char *path, int *width, int *height);

} // namespace renewer
