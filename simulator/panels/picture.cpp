#include "simulator/panels/picture.h"

#include <fstream>
#include <png.h>
#include <stdexcept>

namespace simulator {

std::vector<uint8_t> png_of(const picture &content) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(content.width);
    image.height = static_cast<png_uint_32>(content.height);
    image.format = PNG_FORMAT_RGB;
    std::vector<uint8_t> bytes(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = bytes.size();
    if (!png_image_write_to_memory(&image, bytes.data(), &size, 0, content.rgb.data(), 0,
                                   nullptr)) {
        throw std::runtime_error(std::string("picture: ") + image.message);
    }
    bytes.resize(size);
    return bytes;
}

void write_png(const std::filesystem::path &path, const picture &content) {
    const std::vector<uint8_t> bytes = png_of(content);
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) {
        throw std::runtime_error(path.string() + ": cannot be written");
    }
}

picture read_png(const std::filesystem::path &path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    picture content;
    if (png_image_begin_read_from_file(&image, path.c_str())) {
        image.format = PNG_FORMAT_RGB;
        content = {static_cast<int>(image.width), static_cast<int>(image.height), {}};
        content.rgb.resize(PNG_IMAGE_SIZE(image));
        png_image_finish_read(&image, nullptr, content.rgb.data(), 0, nullptr);
    }
    if (PNG_IMAGE_FAILED(image)) {
        throw std::runtime_error(path.string() + ": " + image.message);
    }
    return content;
}

} // namespace simulator
