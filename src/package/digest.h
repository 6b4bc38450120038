#pragma once

#include "package/package.h"

#include <cstdio>

// The digest that seals a package. Used by the package library only.
namespace renewer {

// The MD5 digest of everything from byte 20 of a package to its end.
struct package_digest {
    uint8_t bytes[md5_size];
    bool complete; // false when the package could not be read to its end
};

// Digests `package`, open for reading.
package_digest digest_package(FILE *package);

} // namespace renewer
