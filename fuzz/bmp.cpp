#include "input.h"

#include "bmp/mw_bmp.h"

#include <numeric>

using namespace renewer;

// The picture loader, on any file. Every byte that it returns must be readable.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::put_input(fuzz::text_of(data, size));
    int width = 0;
    int height = 0;
    const owned_memory<uint8_t> pixels = read_bmp_rgb565(fuzz::input_path, &width, &height);
    if (pixels != nullptr) {
        fuzz::expect(width > 0 && height > 0);
        const uint8_t *const end = pixels.get() + ptrdiff_t{width} * height * 2;
        volatile unsigned sum = std::accumulate<const uint8_t *>(pixels.get(), end, 0U);
        static_cast<void>(sum);
    }

    int bytes_per_pixel = 0;
    const owned_memory<uint8_t> rows =
        read_bmp(fuzz::input_path, &width, &height, &bytes_per_pixel);
    fuzz::expect(rows == nullptr || bytes_per_pixel >= 3);
    return 0;
}
