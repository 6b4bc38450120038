#pragma once

#include "lcd/sa1230_layer.h"

#include <array>
#include <cstddef>

// The pictures that the colour LCD shows without any file, rendered at build time from
// sa1230_pictures.txt: pixels as in a `sa1230_layer`.
namespace renewer {

template <size_t width, size_t height>
using sa1230_picture = std::array<uint8_t, width * height * sa1230_pixel_size>;

extern const sa1230_picture<174, 39> updating_bmp;
extern const sa1230_picture<275, 68> update_now_bmp;
extern const sa1230_picture<247, 38> update_success_bmp;
extern const sa1230_picture<221, 39> update_failed_bmp;

} // namespace renewer
