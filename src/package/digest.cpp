#include "package/digest.h"

#include "package/reading.h"

#include <algorithm>
#include <md5.h>

namespace renewer {

static_assert(MD5_DIGEST_LENGTH == md5_size);

package_digest digest_package(FILE *package, size_t chunk) {
    uint8_t buffer[8192];
    chunk = std::min(chunk, sizeof(buffer));
    package_digest digest = {};
    MD5_CTX context;
    MD5Init(&context);
    const bool found = seek_to(package, md5_range_begin);
    while (const size_t taken = found ? fread(buffer, 1, chunk, package) : 0) {
        MD5Update(&context, buffer, taken);
    }
    MD5Final(digest.bytes, &context);
    digest.complete = found && ferror(package) == 0;
    return digest;
}

} // namespace renewer
