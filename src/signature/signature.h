#pragma once

#include <cstddef>
#include <cstdint>

// Detached signatures of files, as minisign makes them: Ed25519 (RFC 8032) over the BLAKE2b digest
// (RFC 7693) of the file, and over the signer's comment. The public key suffices to check, but not
// to sign.
namespace renewer {

constexpr size_t trusted_comment_size = 8192; // with its terminator

// Why a signature is not accepted.
enum class signature_fault {
    none,
    file_unreadable,
    key_unreadable,
    key_malformed,
    signature_missing, // also when it cannot be opened for another reason, see errno
    signature_malformed,
    signature_of_whole_file, // made without the digest, which would need all of the file in memory
    other_key,               // made with another key than this one
    file_changed,            // or the signature, or the key
    comment_changed,
};

struct signature_report {
    signature_fault fault;
    char comment[trusted_comment_size]; // the signer's, a text; empty unless the signature holds
};

// Checks that the file at `path` is what the holder of a key has signed. Memory does not grow with
// the size of the file. A file that may change in the meantime should be copied first.
//
// signature_path: the signature, or null for the one beside the file, "<path>.minisig"
// key_path:       the public key, a file of two lines
// report:         filled with the reason or the signer's comment, unless it is null
//
// Returns 1 when the signature holds, 0 otherwise; prints nothing.
int check_signature(const char *path, const char *signature_path, const char *key_path,
                    signature_report *report);

// Says in words why a signature is not accepted.
const char *signature_fault_str(signature_fault fault);

} // namespace renewer
