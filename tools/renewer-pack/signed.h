#pragma once

#include <filesystem>
#include <string>

namespace pack {

// The result of checking a package's signature.
struct signature_result {
    bool holds = false;
    std::string comment; // the signer's, if it holds
    std::string reason;  // if it does not
};

// Checks the signature beside a package. Throws `usage_error` if the key is not a public key,
// std::system_error if key or package cannot be read.
signature_result check_signature_of(const std::filesystem::path &package,
                                    const std::filesystem::path &key);

} // namespace pack
