#include "signature/signature.h"

#include "platform/files.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <sodium.h>

namespace renewer {

namespace {

constexpr char key_algorithm[] = "Ed";
constexpr char signature_algorithm[] = "ED"; // of the file's digest
constexpr char whole_file_algorithm[] = "Ed";
constexpr size_t algorithm_size = 2;
constexpr size_t key_id_size = 8; // in both files, so that a wrong key is reported as one
constexpr size_t digest_size = crypto_generichash_BYTES_MAX;
constexpr size_t chunk_size = 16 * 1024;
constexpr char untrusted_prefix[] = "untrusted comment: ";
constexpr char trusted_prefix[] = "trusted comment: ";
constexpr size_t longest_line = sizeof(trusted_prefix) + trusted_comment_size;

// What the second line of each file holds, in base64 (RFC 4648).
struct public_key {
    char algorithm[algorithm_size];
    uint8_t id[key_id_size];
    uint8_t bytes[crypto_sign_PUBLICKEYBYTES];
};
static_assert(sizeof(public_key) == 42);

struct file_signature {
    char algorithm[algorithm_size];
    uint8_t id[key_id_size];
    uint8_t bytes[crypto_sign_BYTES];
};
static_assert(sizeof(file_signature) == 74);

// What the signature of the comment covers: the file's signature, and the comment behind it.
struct signed_comment {
    uint8_t file_signature[crypto_sign_BYTES];
    char text[trusted_comment_size];
};
static_assert(sizeof(signed_comment) == crypto_sign_BYTES + trusted_comment_size);

struct signature_file {
    file_signature signature;
    signed_comment comment;
    uint8_t comment_signature[crypto_sign_BYTES];
};

// Reads the next line into `line` without its end; false when there is none that fits.
bool read_line(FILE *file, char (&line)[longest_line]) {
    if (fgets(line, sizeof(line), file) == nullptr) {
        return false;
    }
    const size_t length = strcspn(line, "\r\n");
    // A line without its end, but not at the end of the file, did not fit.
    const bool whole = line[length] != '\0' || feof(file) != 0;
    line[length] = '\0';
    return whole;
}

bool read_comment(FILE *file, const char *prefix, char (&line)[longest_line]) {
    return read_line(file, line) && strncmp(line, prefix, strlen(prefix)) == 0;
}

// Reads a line of base64 that stands for exactly the bytes of `record`.
template <typename T>
bool read_record(FILE *file, char (&line)[longest_line], T *record) {
    size_t length = 0;
    return read_line(file, line) &&
           sodium_base642bin(reinterpret_cast<unsigned char *>(record), sizeof(*record), line,
                             strlen(line), nullptr, &length, nullptr,
                             sodium_base64_VARIANT_ORIGINAL) == 0 &&
           length == sizeof(*record);
}

bool is_algorithm(const char (&algorithm)[algorithm_size], const char *wanted) {
    return memcmp(algorithm, wanted, algorithm_size) == 0;
}

signature_fault read_key(const char *path, public_key *key) {
    const owned_file file = open_for_reading(path);
    if (file == nullptr) {
        return signature_fault::key_unreadable;
    }
    char line[longest_line];
    const bool sound = read_comment(file.get(), untrusted_prefix, line) &&
                       read_record(file.get(), line, key) &&
                       is_algorithm(key->algorithm, key_algorithm);
    return sound ? signature_fault::none : signature_fault::key_malformed;
}

bool read_trusted_comment(FILE *file, char (&line)[longest_line], signature_file *signature) {
    if (!read_comment(file, trusted_prefix, line) ||
        strlen(line) - strlen(trusted_prefix) >= trusted_comment_size) {
        return false;
    }
    strcpy(signature->comment.text, line + strlen(trusted_prefix));
    memcpy(signature->comment.file_signature, signature->signature.bytes, crypto_sign_BYTES);
    return read_record(file, line, &signature->comment_signature);
}

signature_fault read_signature(const char *path, signature_file *signature) {
    const owned_file file = open_for_reading(path);
    if (file == nullptr) {
        return signature_fault::signature_missing;
    }
    char line[longest_line];
    if (!read_comment(file.get(), untrusted_prefix, line) ||
        !read_record(file.get(), line, &signature->signature)) {
        return signature_fault::signature_malformed;
    }
    if (is_algorithm(signature->signature.algorithm, whole_file_algorithm)) {
        return signature_fault::signature_of_whole_file;
    }
    const bool sound = is_algorithm(signature->signature.algorithm, signature_algorithm) &&
                       read_trusted_comment(file.get(), line, signature);
    return sound ? signature_fault::none : signature_fault::signature_malformed;
}

signature_fault read_beside(const char *path, signature_file *signature) {
    char beside[PATH_MAX];
    const int length = snprintf(beside, sizeof(beside), "%s.minisig", path);
    if (length < 0 || static_cast<size_t>(length) >= sizeof(beside)) {
        return signature_fault::signature_missing;
    }
    return read_signature(beside, signature);
}

// Digests the whole file; false when it cannot be read to its end.
bool digest_file(FILE *file, uint8_t (&digest)[digest_size]) {
    setvbuf(file, nullptr, _IONBF, 0);
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, sizeof(digest));
    uint8_t chunk[chunk_size];
    while (const size_t taken = fread(chunk, 1, sizeof(chunk), file)) {
        crypto_generichash_update(&state, chunk, taken);
    }
    crypto_generichash_final(&state, digest, sizeof(digest));
    return ferror(file) == 0;
}

// Whether `signature` is one of `message` by the holder of `key`.
bool verify(const uint8_t *signature, const void *message, size_t size, const public_key &key) {
    return crypto_sign_verify_detached(signature, static_cast<const unsigned char *>(message), size,
                                       key.bytes) == 0;
}

signature_fault check_file(const char *path, const signature_file &signature,
                           const public_key &key) {
    const owned_file file = open_for_reading(path);
    uint8_t digest[digest_size];
    if (file == nullptr || !digest_file(file.get(), digest)) {
        return signature_fault::file_unreadable;
    }
    if (!verify(signature.signature.bytes, digest, sizeof(digest), key)) {
        return signature_fault::file_changed;
    }
    const size_t size = sizeof(signature.comment.file_signature) + strlen(signature.comment.text);
    return verify(signature.comment_signature, &signature.comment, size, key)
               ? signature_fault::none
               : signature_fault::comment_changed;
}

signature_fault fault_of(const char *path, const char *signature_path, const char *key_path,
                         signature_file *signature) {
    if (path == nullptr || sodium_init() < 0) {
        return signature_fault::file_unreadable;
    }
    public_key key;
    if (const signature_fault fault = read_key(key_path, &key); fault != signature_fault::none) {
        return fault;
    }
    const signature_fault fault = signature_path == nullptr
                                      ? read_beside(path, signature)
                                      : read_signature(signature_path, signature);
    if (fault != signature_fault::none) {
        return fault;
    }
    // A wrong key is found before a large file is read.
    if (memcmp(signature->signature.id, key.id, key_id_size) != 0) {
        return signature_fault::other_key;
    }
    return check_file(path, *signature, key);
}

} // namespace

int check_signature(const char *path, const char *signature_path, const char *key_path,
                    signature_report *report) {
    signature_file signature = {};
    const signature_fault fault = fault_of(path, signature_path, key_path, &signature);
    const bool holds = fault == signature_fault::none;
    if (report != nullptr) {
        report->fault = fault;
        strcpy(report->comment, holds ? signature.comment.text : "");
    }
    return holds ? 1 : 0;
}

const char *signature_fault_str(signature_fault fault) {
    switch (fault) {
    case signature_fault::none:
        return "the signature holds";
    case signature_fault::file_unreadable:
        return "the file cannot be read";
    case signature_fault::key_unreadable:
        return "the key cannot be read";
    case signature_fault::key_malformed:
        return "the key is no public key";
    case signature_fault::signature_missing:
        return "it is not signed";
    case signature_fault::signature_malformed:
        return "the signature is no signature";
    case signature_fault::signature_of_whole_file:
        return "the signature is not one of the file's digest";
    case signature_fault::other_key:
        return "it is signed with another key";
    case signature_fault::file_changed:
        return "the signature does not match the file";
    case signature_fault::comment_changed:
        return "the signer's comment was changed";
    }
    return "";
}

} // namespace renewer
