#pragma once

#include <filesystem>
#include <string>

namespace pack {

// What is known of a package's signature.
struct signature_result {
    bool holds = false;
    std::string comment; // the signer's, when it holds
    std::string reason;  // why it does not
};

// Checks the signature beside a package. Throws `misused` for a key that is none,
// std::system_error when key or package cannot be read.
signature_result check_signature_of(const std::filesystem::path &package,
                                    const std::filesystem::path &key);

} // namespace pack
