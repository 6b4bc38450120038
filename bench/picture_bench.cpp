// Measures the way from a picture file of the colour LCD, in the page cache, to the bytes that are
// sent: load, convert to 16 bits, rotate. For comparison: the same work done with pixman, and
// reading the file only. Only the frame to send is kept from one picture to the next. Sending a
// picture takes 11.9 ms (74088 bytes at 50 MHz).

#include "bmp/mw_bmp.h"
#include "lcd/sa1230_layer.h"

#include <benchmark/benchmark.h>
#include <pixman.h>

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace renewer;

constexpr int width = sa1230_surface_width;
constexpr int height = sa1230_surface_height;
constexpr size_t head_size = 54;
constexpr size_t row_size = (width * 3 + 3) / 4 * 4;

using frame = std::vector<uint8_t>;
using buffer = owned_memory<uint8_t>;

buffer allocate(size_t size) {
    return buffer(static_cast<uint8_t *>(malloc(size)));
}

struct picture_file {
    std::string path = "/tmp/picture_bench." + std::to_string(getpid()) + ".bmp";

    picture_file() {
        std::string bytes(head_size + row_size * height, '\0');
        std::mt19937 generator(1);
        for (char &byte : bytes) {
            byte = static_cast<char>(generator());
        }
        const auto put = [&bytes](size_t at, const auto &value) {
            memcpy(&bytes[at], &value, sizeof(value));
        };
        put(0, uint16_t{0x4D42});
        put(10, uint32_t{head_size});
        put(18, int32_t{width});
        put(22, int32_t{height});
        put(28, uint16_t{24});
        FILE *file = fopen(path.c_str(), "wb");
        fwrite(bytes.data(), 1, bytes.size(), file);
        fclose(file);
    }
    ~picture_file() { unlink(path.c_str()); }
};

void with_ours(const char *path, frame &out) {
    int read_width = 0;
    int read_height = 0;
    const owned_memory<uint8_t> pixels = read_bmp_rgb565(path, &read_width, &read_height);
    const sa1230_layer source = {pixels.get(), 0, 0, read_width, read_height};
    sa1230_layer rotated = {out.data(), 0, 0, 0, 0};
    change_layer_direction(&source, &rotated, sa1230_pixel_size);
}

buffer read_file(const char *path) {
    const owned_descriptor file(open(path, O_RDONLY | O_CLOEXEC));
    struct stat about;
    fstat(file.get(), &about);
    buffer bytes = allocate(static_cast<size_t>(about.st_size));
    if (read(file.get(), bytes.get(), static_cast<size_t>(about.st_size)) != about.st_size) {
        abort();
    }
    return bytes;
}

void compose(pixman_image_t *from, pixman_image_t *to) {
    pixman_image_composite32(PIXMAN_OP_SRC, from, nullptr, to, 0, 0, 0, 0, 0, 0,
                             pixman_image_get_width(to), pixman_image_get_height(to));
}

// Rotates: column c, row r of the result is column width - 1 - r, row c of the image.
void rotate_when_read(pixman_image_t *image) {
    const pixman_transform_t turn = {{{0, -pixman_fixed_1, pixman_int_to_fixed(width)},
                                      {pixman_fixed_1, 0, 0},
                                      {0, 0, pixman_fixed_1}}};
    pixman_image_set_transform(image, &turn);
}

// Starts at the file's last row with a negative stride: the file has the lowest row first.
pixman_image_t *stored_picture(const buffer &file) {
    auto *const last_row =
        reinterpret_cast<uint32_t *>(file.get() + head_size + (height - 1) * row_size);
    return pixman_image_create_bits(PIXMAN_r8g8b8, width, height, last_row,
                                    -static_cast<int>(row_size));
}

pixman_image_t *narrow_picture(const buffer &pixels, int columns, int rows) {
    return pixman_image_create_bits(PIXMAN_r5g6b5, columns, rows,
                                    reinterpret_cast<uint32_t *>(pixels.get()), columns * 2);
}

void swap_bytes(const buffer &swapped, frame &to) {
    const uint8_t *const from = swapped.get();
    for (size_t i = 0; i < to.size(); i += 2) {
        to[i] = from[i + 1];
        to[i + 1] = from[i];
    }
}

// Converts first, then rotates the 16-bit picture.
void with_pixman_in_two_steps(const char *path, frame &out) {
    const buffer file = read_file(path);
    const buffer narrow = allocate(sa1230_frame_size);
    const buffer rotated = allocate(sa1230_frame_size);
    pixman_image_t *const stored = stored_picture(file);
    pixman_image_t *const source = narrow_picture(narrow, width, height);
    pixman_image_t *const result = narrow_picture(rotated, height, width);
    compose(stored, source);
    rotate_when_read(source);
    compose(source, result);
    swap_bytes(rotated, out);
    pixman_image_unref(result);
    pixman_image_unref(source);
    pixman_image_unref(stored);
}

// Converts and rotates at once.
void with_pixman_in_one_step(const char *path, frame &out) {
    const buffer file = read_file(path);
    const buffer rotated = allocate(sa1230_frame_size);
    pixman_image_t *const source = stored_picture(file);
    pixman_image_t *const result = narrow_picture(rotated, height, width);
    rotate_when_read(source);
    compose(source, result);
    swap_bytes(rotated, out);
    pixman_image_unref(result);
    pixman_image_unref(source);
}

void file_alone(const char *path, frame &) {
    read_file(path);
}

template <void (*convert)(const char *, frame &), bool is_checked>
void picture(benchmark::State &state) {
    const picture_file file;
    frame out(sa1230_frame_size);
    frame expected(sa1230_frame_size);
    with_ours(file.path.c_str(), expected);
    for (auto _ : state) {
        convert(file.path.c_str(), out);
        benchmark::DoNotOptimize(out.data());
    }
    if (is_checked && out != expected) {
        state.SkipWithError("the results differ");
    }
}

BENCHMARK(picture<with_ours, true>)->Name("renewer")->Unit(benchmark::kMicrosecond);
BENCHMARK(picture<with_pixman_in_two_steps, true>)
    ->Name("pixman, convert then turn")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(picture<with_pixman_in_one_step, true>)
    ->Name("pixman, at once")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(picture<file_alone, false>)->Name("reading alone")->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
