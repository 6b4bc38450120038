#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Packages written out byte by byte.
namespace sample {

using namespace std::string_literals;

inline std::string word(uint32_t value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16),
            static_cast<char>(value >> 24)};
}

// A text in a field of `size` bytes, filled with zero bytes.
inline std::string field(std::string_view text, size_t size) {
    std::string bytes(text);
    bytes.resize(size, '\0');
    return bytes;
}

inline std::string node(uint32_t type, uint32_t offset, uint32_t size) {
    return word(type) + word(offset) + word(size);
}

// A new-layout header of 100 bytes with all its fields; the digest is 16 bytes a0 to af.
struct new_header {
    uint32_t magic = 0x77007703;
    std::string md5 = "\xa0\xa1\xa2\xa3\xa4\xa5\xa6\xa7\xa8\xa9\xaa\xab\xac\xad\xae\xaf"s;
    uint32_t head_len = 108;
    uint32_t head_version = 1;
    uint32_t pnlen = 12;
    std::string pn = "101356340012";
    uint32_t version_len = 8;
    std::string git_version = "1a2b3c4d";
    std::string date = "20240523";
    std::string time = "09.05.01";
    uint32_t count = 0;
    uint32_t flag_low = 0;
    uint32_t flag_high = 0;

    std::string bytes() const {
        return word(magic) + md5 + word(head_len) + word(head_version) + word(pnlen) +
               field(pn, 20) + word(version_len) + field(git_version, 9) + field(date, 11) +
               field(time, 12) + word(count) + word(flag_low) + word(flag_high);
    }
};

// An old-layout header of 60 bytes.
struct old_header {
    uint32_t magic = 0x77007700;
    std::string md5 = "\xa0\xa1\xa2\xa3\xa4\xa5\xa6\xa7\xa8\xa9\xaa\xab\xac\xad\xae\xaf"s;
    uint32_t version = 0x010203;
    std::string pn = "\x12\x34\x56\x78"s;
    uint32_t pnlen = 8;
    uint32_t date = 2024U << 9 | 5U << 5 | 23U;
    uint32_t time = 9U << 13 | 5U << 6 | 1U;
    uint32_t flag = 0;
    uint32_t count = 0;

    std::string bytes() const {
        return word(magic) + md5 + word(version) + field(pn, 16) + word(pnlen) + word(date) +
               word(time) + word(flag) + word(count);
    }
};

// A package with the install script "true\n" and a kernel of 8 bytes. The digest was made by
// md5sum.
inline const std::string new_digest =
    "\x50\x73\x87\x20\x57\x2f\x56\xa0\x2f\x1d\x33\x91\x0b\x38\x3c\x4d"s;
inline std::string new_package(uint32_t magic = 0x77007703) {
    return new_header{.magic = magic, .md5 = new_digest, .count = 2, .flag_low = 5}.bytes() +
           "1.1.4.0\0"s + word(0) + node(1, 136, 5) + node(3, 144, 8) + "true\n\0\0\0kernel!\n"s;
}

// An old-layout package with the install script "true\n" and the updater. Digests by md5sum, for
// the flag words 0 and 7.
inline const std::string old_digest_flag_0 =
    "\x63\x3d\x31\x34\xfe\x81\xa0\x03\x19\xdf\x9a\x63\x39\xf1\x35\xba"s;
inline const std::string old_digest_flag_7 =
    "\x98\x8c\x53\xa3\x79\x9b\x3a\x9a\xe6\x71\xe5\xb5\xec\xae\x7e\xdf"s;
inline std::string old_package(uint32_t flag = 0) {
    return old_header{
               .md5 = flag == 7 ? old_digest_flag_7 : old_digest_flag_0, .flag = flag, .count = 2}
               .bytes() +
           node(1, 84, 5) + node(31, 92, 12) + "true\n\0\0\0the renewer\n"s;
}

} // namespace sample
