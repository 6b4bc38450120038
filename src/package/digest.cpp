#include "package/digest.h"

#include "package/reading.h"

#include <md5.h>

namespace renewer {

static_assert(MD5_DIGEST_LENGTH == md5_size);

package_digest digest_package(FILE *package) {
    transfer_buffer buffer;
    package_digest digest = {};
    MD5_CTX context;
    MD5Init(&context);
    const bool found = seek_to(package, md5_range_begin);
    while (const size_t taken = found ? fread(buffer.bytes(), 1, buffer.size(), package) : 0) {
        MD5Update(&context, buffer.bytes(), taken);
    }
    MD5Final(digest.bytes, &context);
    digest.complete = found && ferror(package) == 0;
    return digest;
}

} // namespace renewer
