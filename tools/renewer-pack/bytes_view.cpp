#include "bytes_view.h"

#include "file_bytes.h"
#include "package/reading.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace pack {

namespace {

using renewer::pack_head;
using renewer::pack_head_new;
using renewer::pack_node;

constexpr size_t line_size = 16; // bytes

enum class value_kind { none, number, hexadecimal_number, text };

struct field {
    const char *name;
    uint64_t offset;
    uint64_t size;
    value_kind kind;
};

constexpr field old_fields[] = {
    {"magic", offsetof(pack_head, magic), 4, value_kind::hexadecimal_number},
    {"md5", offsetof(pack_head, md5), 16, value_kind::none},
    {"version", offsetof(pack_head, version), 4, value_kind::hexadecimal_number},
    {"pn", offsetof(pack_head, pn), 16, value_kind::none},
    {"pnlen", offsetof(pack_head, pnlen), 4, value_kind::number},
    {"date", offsetof(pack_head, date), 4, value_kind::hexadecimal_number},
    {"time", offsetof(pack_head, time), 4, value_kind::hexadecimal_number},
    {"flag", offsetof(pack_head, flag), 4, value_kind::hexadecimal_number},
    {"count", offsetof(pack_head, count), 4, value_kind::number},
};

constexpr field new_fields[] = {
    {"magic", offsetof(pack_head_new, magic), 4, value_kind::hexadecimal_number},
    {"md5", offsetof(pack_head_new, md5), 16, value_kind::none},
    {"head_len", offsetof(pack_head_new, head_len), 4, value_kind::number},
    {"head_version", offsetof(pack_head_new, head_version), 4, value_kind::number},
    {"pnlen", offsetof(pack_head_new, pnlen), 4, value_kind::number},
    {"pn", offsetof(pack_head_new, pn), 20, value_kind::text},
    {"version_len", offsetof(pack_head_new, version_len), 4, value_kind::number},
    {"git_version", offsetof(pack_head_new, git_version), 9, value_kind::text},
    {"date", offsetof(pack_head_new, date), 11, value_kind::text},
    {"time", offsetof(pack_head_new, time), 12, value_kind::text},
    {"count", offsetof(pack_head_new, count), 4, value_kind::number},
    {"flag", offsetof(pack_head_new, flag), 8, value_kind::hexadecimal_number},
};

std::string value_of(const std::string &bytes, value_kind kind) {
    uint64_t number = 0; // least significant byte first
    for (size_t i = std::min<size_t>(bytes.size(), sizeof(number)); i > 0; --i) {
        number = number << 8 | static_cast<unsigned char>(bytes[i - 1]);
    }
    switch (kind) {
    case value_kind::number:
        return std::to_string(number);
    case value_kind::hexadecimal_number:
        return hexadecimal(number);
    case value_kind::text:
        return "\"" + printable(text_of(bytes.data(), bytes.size())) + "\"";
    case value_kind::none:
        break;
    }
    return "";
}

void print_line(uint64_t offset, const std::string &bytes, const std::string &words) {
    std::string digits;
    for (const char byte : bytes) {
        const auto value = static_cast<uint8_t>(byte);
        digits += hexadecimal_bytes(&value, 1) + " ";
    }
    printf("%07llu  %-48s %s\n", static_cast<unsigned long long>(offset), digits.c_str(),
           words.c_str());
}

void print_field(std::ifstream &file, const field &printed, const std::string &words) {
    const std::string bytes = bytes_at(file, printed.offset, printed.size);
    const std::string value = words.empty() ? value_of(bytes, printed.kind) : words;
    const std::string name = printed.name + std::string(value.empty() ? "" : " ") + value;
    for (size_t begin = 0; begin < bytes.size(); begin += line_size) {
        print_line(printed.offset + begin, bytes.substr(begin, line_size), begin == 0 ? name : "");
    }
}

// Prints what lies between the new layout's fixed header and the node table.
void print_version(std::ifstream &file, const package_file &package) {
    const uint64_t begin = renewer::pack_head_new_size;
    const uint64_t fill = package.new_head.head_len;
    const uint64_t word = renewer::align4(fill);
    const uint64_t longest = package.version.size() + 1;
    if (fill < begin || fill - begin > longest || word > package.size) {
        return; // inconsistent lengths, which check reports
    }
    print_field(file, {"version", begin, fill - begin, value_kind::text}, "");
    print_field(file, {"fill", fill, word - fill, value_kind::none}, "");
    print_field(file, {"reserved", word, 4, value_kind::number}, "");
}

void print_nodes(std::ifstream &file, const package_file &package) {
    for (size_t i = 0; i < package.nodes.size(); ++i) {
        const pack_node &node = package.nodes[i];
        print_field(
            file, {"node", package.table_offset + i * sizeof(node), sizeof(node), value_kind::none},
            std::to_string(i) + ": " + type_name(node.type) + ", offset " +
                std::to_string(node.offset) + ", size " + std::to_string(node.size));
    }
}

} // namespace

void print_bytes(const package_file &package) {
    std::ifstream file = open_file(package.path);
    if (package.layout == layout_kind::old_layout) {
        for (const field &one : old_fields) {
            print_field(file, one, "");
        }
    } else {
        for (const field &one : new_fields) {
            print_field(file, one, "");
        }
        print_version(file, package);
    }
    print_nodes(file, package);
}

} // namespace pack
