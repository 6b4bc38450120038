#include "package_file.h"

#include "file_bytes.h"
#include "package/reading.h"

#include <algorithm>
#include <cstring>

namespace pack {

namespace {

using renewer::pack_node;

template <typename record>
record record_of(const std::string &bytes) {
    record value = {};
    memcpy(static_cast<void *>(&value), bytes.data(), std::min(bytes.size(), sizeof(record)));
    return value;
}

// Magic 77007700 belongs to the old layout, but readers of the new layout accept it, too; so the
// fields that have fixed values in the new layout decide.
layout_kind layout_of(const std::string &bytes) {
    const auto head =
        record_of<renewer::pack_head_new>(bytes.substr(0, renewer::pack_head_new_size));
    if (head.magic != renewer::magic_old) {
        return layout_kind::new_layout;
    }
    const bool is_new = bytes.size() >= renewer::pack_head_new_size && head.head_version == 1 &&
                        head.version_len > 0 &&
                        head.head_len == renewer::pack_head_new_size + head.version_len;
    return is_new ? layout_kind::new_layout : layout_kind::old_layout;
}

void read_node_table(std::ifstream &file, uint32_t count, package_file &package) {
    const uint64_t wanted = uint64_t{count} * sizeof(pack_node);
    const uint64_t there =
        package.size > package.table_offset ? package.size - package.table_offset : 0;
    package.table_is_cut = there < wanted;
    if (package.table_is_cut) {
        add_defect(package, "the node table of " + std::to_string(count) + " records takes " +
                                std::to_string(wanted) + " bytes, the file holds " +
                                std::to_string(there));
    }
    if (count > renewer::most_node_records) {
        add_defect(package, "the node table has " + std::to_string(count) +
                                " records, a unit takes at most " +
                                std::to_string(renewer::most_node_records));
    }
    const uint64_t taken =
        std::min(std::min(there, wanted) / sizeof(pack_node), uint64_t{renewer::most_node_records});
    const std::string bytes = bytes_at(file, package.table_offset, taken * sizeof(pack_node));
    for (size_t i = 0; i + sizeof(pack_node) <= bytes.size(); i += sizeof(pack_node)) {
        package.nodes.push_back(record_of<pack_node>(bytes.substr(i, sizeof(pack_node))));
    }
}

std::string old_part_number(const renewer::pack_head &head) {
    const size_t digits = std::min<size_t>(head.pnlen, 2 * sizeof(head.pn));
    std::string text = hexadecimal_bytes(head.pn, digits / 2);
    if (digits % 2 != 0) {
        text += "0123456789abcdef"[head.pn[digits / 2] & 15];
    }
    return text;
}

void read_old(std::ifstream &file, package_file &package) {
    const std::string bytes = bytes_at(file, 0, sizeof(renewer::pack_head));
    if (bytes.size() < sizeof(renewer::pack_head)) {
        add_defect(package,
                   "the header is short: " + std::to_string(bytes.size()) + " of 60 bytes");
    }
    const auto head = record_of<renewer::pack_head>(bytes);
    package.old_head = head;
    package.version = version_text(head.version);
    package.part_number = old_part_number(head);
    package.md5 = hexadecimal_bytes(head.md5, renewer::md5_size);
    package.flag = head.flag;
    package.table_offset = sizeof(head);
    if (head.pnlen > 2 * sizeof(head.pn)) {
        add_defect(package, "the part number claims " + std::to_string(head.pnlen) +
                                " of at most 32 digits");
    }
    read_node_table(file, head.count, package);
}

void check_text(const char *name, const char *field, size_t size, package_file &package) {
    if (text_of(field, size).size() == size) {
        add_defect(package, std::string("the ") + name + " is not terminated");
    }
}

void check_new_header(const renewer::pack_head_new &head, package_file &package) {
    check_text("part number", head.pn, sizeof(head.pn), package);
    check_text("revision", head.git_version, sizeof(head.git_version), package);
    check_text("date", head.date, sizeof(head.date), package);
    check_text("time", head.time, sizeof(head.time), package);
    if (head.pnlen != package.part_number.size()) {
        add_defect(package, "the part number has " + std::to_string(package.part_number.size()) +
                                " characters, the header says " + std::to_string(head.pnlen));
    }
    if (uint64_t{head.head_len} != renewer::pack_head_new_size + uint64_t{head.version_len}) {
        add_defect(package, "the header length " + std::to_string(head.head_len) +
                                " does not match a version text of " +
                                std::to_string(head.version_len) + " bytes");
    }
}

// Checks the bytes between version text and node table: padding to a multiple of 4, and a reserved
// word that no reader uses.
void check_fill(std::ifstream &file, const renewer::pack_head_new &head, package_file &package) {
    const uint64_t word = renewer::align4(head.head_len);
    if (!all_zero(bytes_at(file, head.head_len, word - head.head_len))) {
        add_defect(package, "the padding behind the version text is not zero");
    }
    const std::string reserved = bytes_at(file, word, sizeof(uint32_t));
    if (!all_zero(reserved)) {
        add_defect(package,
                   "the reserved word is " + hexadecimal(record_of<uint32_t>(reserved)) + ", not 0",
                   false);
    }
}

void read_version(std::ifstream &file, const renewer::pack_head_new &head, package_file &package) {
    const uint64_t begin = renewer::pack_head_new_size;
    const uint64_t there = package.size > begin ? package.size - begin : 0;
    const uint64_t length = std::min({uint64_t{head.version_len}, there, uint64_t{4096}});
    const std::string text = bytes_at(file, begin, length);
    package.version = text_of(text.data(), text.size());
    if (there < head.version_len || head.version_len == 0) {
        add_defect(package, "the version text of " + std::to_string(head.version_len) +
                                " bytes is short: the file holds " + std::to_string(there));
    } else if (package.version.size() == text.size()) {
        add_defect(package, "the version text is not terminated");
    }
    if (head.head_len == begin + head.version_len) {
        check_fill(file, head, package);
    }
}

void read_new(std::ifstream &file, package_file &package) {
    const std::string bytes = bytes_at(file, 0, renewer::pack_head_new_size);
    const auto head = record_of<renewer::pack_head_new>(bytes);
    package.new_head = head;
    package.part_number = text_of(head.pn, sizeof(head.pn));
    package.md5 = hexadecimal_bytes(head.md5, renewer::md5_size);
    package.flag = head.flag;
    package.table_offset = renewer::node_table_offset(head.head_len);
    if (bytes.size() < renewer::pack_head_new_size) {
        add_defect(package,
                   "the header is short: " + std::to_string(bytes.size()) + " of 100 bytes");
        return;
    }
    check_new_header(head, package);
    read_version(file, head, package);
    read_node_table(file, head.count, package);
}

} // namespace

void add_defect(package_file &package, const std::string &text, bool hinders) {
    package.is_damaged = package.is_damaged || hinders;
    if (package.defects.size() < most_defects) {
        package.defects.push_back(text);
    } else {
        ++package.more_defects;
    }
}

package_file read_package(const std::filesystem::path &path) {
    std::ifstream file = open_file(path);
    package_file package;
    package.path = path;
    file.seekg(0, std::ios::end);
    package.size = static_cast<uint64_t>(std::max<std::streamoff>(file.tellg(), 0));
    const std::string bytes = bytes_at(file, 0, renewer::pack_head_new_size);
    if (bytes.size() < sizeof(package.magic)) {
        throw refused("not a package: it has " + std::to_string(bytes.size()) + " bytes");
    }
    package.magic = record_of<uint32_t>(bytes);
    if (package.magic != renewer::magic_old && package.magic != renewer::magic_new_1 &&
        package.magic != renewer::magic_new) {
        throw refused("not a package: its magic is " + hexadecimal(package.magic));
    }
    package.layout = layout_of(bytes);
    if (package.layout == layout_kind::old_layout) {
        read_old(file, package);
    } else {
        read_new(file, package);
    }
    return package;
}

package_file named_package(const std::filesystem::path &path) {
    try {
        return read_package(path);
    } catch (const refused &reason) {
        throw refused(path.string() + ": " + reason.what());
    }
}

const char *layout_name(const package_file &package) {
    return package.layout == layout_kind::old_layout ? "old" : "new";
}

std::string file_name(uint32_t type) {
    return renewer::node_type_to_str(static_cast<int>(type)) +
           std::string(renewer::node_file_suffix(type));
}

std::string type_name(uint32_t type) {
    const std::string name = renewer::node_type_to_str(static_cast<int>(type));
    return name.empty() ? "type " + std::to_string(type) : name;
}

} // namespace pack
