#include "input.h"

#include "package/package.h"

#include <cstring>
#include <md5.h>

using namespace renewer;

namespace {

bool digest_matches(const uint8_t *data, size_t size) {
    uint8_t digest[md5_size];
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, data + md5_range_begin, size - md5_range_begin);
    MD5Final(digest, &context);
    return memcmp(digest, data + 4, md5_size) == 0;
}

} // namespace

// Both validators, compared with a digest of the bytes in memory. Every other input gets a correct
// digest first, which no mutation would find.
int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    uint8_t bytes[4096];
    if (size > sizeof(bytes)) {
        return 0;
    }
    memcpy(bytes, data, size);
    if (size > md5_range_begin && (size & 1) != 0) {
        MD5_CTX context;
        MD5Init(&context);
        MD5Update(&context, bytes + md5_range_begin, size - md5_range_begin);
        MD5Final(bytes + 4, &context);
    }
    fuzz::put_input(fuzz::text_of(bytes, size));

    uint32_t magic = 0;
    memcpy(&magic, bytes, size < sizeof(magic) ? size : sizeof(magic));
    fuzz::expect(validate_package(fuzz::input_path) ==
                 (size >= sizeof(pack_head) && magic == magic_old && digest_matches(bytes, size)));

    uint32_t version_len = 0;
    if (size > pack_head_new_size) {
        memcpy(&version_len, bytes + offsetof(pack_head_new, version_len), sizeof(version_len));
    }
    const bool new_magic = magic == magic_old || magic == magic_new_1 || magic == magic_new;
    fuzz::expect(validate_package_new(fuzz::input_path) ==
                 (version_len > 0 && new_magic && digest_matches(bytes, size)));
    return 0;
}
