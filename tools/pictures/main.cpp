// Draws small pictures at build time from a description (see description.h):
//
//     renewer-pictures FONT_DIRECTORY DESCRIPTION source HEADER FILE
//     renewer-pictures FONT_DIRECTORY DESCRIPTION bmp DIRECTORY
//
// "source" writes a C++ file that defines, as the header declares them, arrays of RGB565 pixels
// (two bytes, the high one first, from the top row on); "bmp" writes one 24-bit BMP file a picture.

#include "description.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>

namespace {

using namespace pictures;

void write_source(const std::vector<named_picture> &all, const std::string &header,
                  const std::filesystem::path &path) {
    constexpr size_t bytes_a_line = 24;
    std::ofstream file(path);
    file << "// Drawn at build time.\n#include \"" << header << "\"\n\nnamespace renewer {\n";
    for (const auto &[name, content] : all) {
        file << "\nconst sa1230_picture<" << content.width << ", " << content.height << "> " << name
             << " = {";
        size_t written = 0;
        for (const auto &[red, green, blue] : content.pixels) {
            file << (written % bytes_a_line == 0 ? "\n" : "") << ((red & 0xF8) | green >> 5) << ','
                 << ((green << 3 & 0xE0) | blue >> 3) << ',';
            written += 2;
        }
        file << "\n};\n";
    }
    file << "\n} // namespace renewer\n";
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

std::string little_endian(size_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
    }
    return text;
}

void write_bmp(const canvas &picture, const std::filesystem::path &path) {
    constexpr size_t head_size = 54;
    const size_t row_size = (static_cast<size_t>(picture.width) * 3 + 3) / 4 * 4;
    const size_t data_size = row_size * static_cast<size_t>(picture.height);
    std::string bytes = "BM" + little_endian(head_size + data_size, 4) + little_endian(0, 4) +
                        little_endian(head_size, 4) + little_endian(40, 4) +
                        little_endian(static_cast<size_t>(picture.width), 4) +
                        little_endian(static_cast<size_t>(picture.height), 4) +
                        little_endian(1, 2) + little_endian(24, 2) + little_endian(0, 4) +
                        little_endian(data_size, 4) + std::string(16, '\0');
    for (int y = picture.height - 1; y >= 0; --y) {
        for (int x = 0; x < picture.width; ++x) {
            const colour pixel = picture.at(x, y);
            bytes += {static_cast<char>(pixel.blue), static_cast<char>(pixel.green),
                      static_cast<char>(pixel.red)};
        }
        bytes.resize((bytes.size() - head_size + 3) / 4 * 4 + head_size);
    }
    std::ofstream file(path, std::ios::binary);
    if (!file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())).flush()) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

} // namespace

int main(int argc, char **argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        if (arguments.size() == 5 && arguments[2] == "source") {
            write_source(draw(arguments[1], arguments[0]), arguments[3], arguments[4]);
        } else if (arguments.size() == 4 && arguments[2] == "bmp") {
            std::filesystem::create_directories(arguments[3]);
            for (const auto &[name, content] : draw(arguments[1], arguments[0])) {
                write_bmp(content, std::filesystem::path(arguments[3]) / (name + ".bmp"));
            }
        } else {
            fprintf(stderr, "usage: renewer-pictures FONT_DIRECTORY DESCRIPTION "
                            "(source HEADER FILE | bmp DIRECTORY)\n");
            return 2;
        }
    } catch (const std::exception &error) {
        fprintf(stderr, "renewer-pictures: %s\n", error.what());
        return 1;
    }
    return 0;
}
