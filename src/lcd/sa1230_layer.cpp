#include "lcd/sa1230_layer.h"

#include <array>
#include <cstddef>
#include <cstring>

namespace renewer {

namespace {

bool has_pixels(const sa1230_layer *layer) {
    return layer != nullptr && layer->data != nullptr;
}

bool lies_inside(const sa1230_layer &element, const sa1230_layer &layer) {
    const auto end = [](int32_t start, int32_t length) { return int64_t{start} + length; };
    return element.x >= layer.x && element.y >= layer.y &&
           end(element.x, element.width) <= end(layer.x, layer.width) &&
           end(element.y, element.height) <= end(layer.y, layer.height);
}

template <size_t pixel_size>
void turn(const uint8_t *from, uint8_t *to, ptrdiff_t width, ptrdiff_t height) {
    for (ptrdiff_t column = width - 1; column >= 0; --column) {
        for (ptrdiff_t row = 0; row < height; ++row) {
            memcpy(to, from + (row * width + column) * static_cast<ptrdiff_t>(pixel_size),
                   pixel_size);
            to += pixel_size;
        }
    }
}

constexpr std::array turn_by_pixel_size = {turn<1>, turn<2>, turn<3>, turn<4>};

} // namespace

int32_t change_layer_direction(const sa1230_layer *source, sa1230_layer *destination,
                               uint8_t bytes_per_pixel) {
    if (!has_pixels(source) || !has_pixels(destination) || bytes_per_pixel == 0 ||
        bytes_per_pixel > turn_by_pixel_size.size()) {
        return -1;
    }
    destination->width = source->height;
    destination->height = source->width;
    turn_by_pixel_size[bytes_per_pixel - 1u](source->data, destination->data, source->width,
                                             source->height);
    return 0;
}

int32_t add_element_to_layer(const sa1230_layer *layer, const sa1230_layer *element) {
    if (!has_pixels(layer) || !has_pixels(element) || !lies_inside(*element, *layer)) {
        return -1;
    }
    const ptrdiff_t row_size = ptrdiff_t{element->width} * sa1230_pixel_size;
    for (ptrdiff_t row = 0; row < element->height; ++row) {
        const uint8_t *const from = element->data + row * row_size;
        uint8_t *const to =
            layer->data + ((element->y - layer->y + row) * layer->width + element->x - layer->x) *
                              sa1230_pixel_size;
        for (ptrdiff_t i = 0; i < row_size; ++i) {
            to[i] = static_cast<uint8_t>(to[i] | from[i]);
        }
    }
    return 0;
}

} // namespace renewer
