#include "package/digest.h"

#include "package/reading.h"

#include <algorithm>
#include <md5.h>

namespace renewer {

static_assert(MD5_DIGEST_LENGTH == md5_size);

package_digest digest_package(FILE *package, size_t chunk) {
    uint8_t buffer[read_ahead_size];
    package_digest digest = {};
    MD5_CTX context;
    MD5Init(&context);
    const bool found = seek_to(package, md5_range_begin);
    while (const size_t taken = found ? fread(buffer, 1, sizeof(buffer), package) : 0) {
        for (size_t begin = 0; begin < taken; begin += chunk) {
            MD5Update(&context, buffer + begin, std::min(chunk, taken - begin));
        }
    }
    MD5Final(digest.bytes, &context);
    digest.complete = found && ferror(package) == 0;
    return digest;
}

} // namespace renewer
