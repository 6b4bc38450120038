#pragma once

#include <string>
#include <string_view>

// The header of a new-layout package that the main application leaves, written by hand: 100
// bytes with the part number at 32, the length of the version text at 52 and the record count at
// 88, then the version text with its terminator.
inline std::string pack_tmp(std::string_view pn, std::string_view version = "1.1.4.0") {
    std::string header(100, '\0');
    header.replace(0, 4, std::string("\x03\x77\x00\x77", 4));
    header[20] = static_cast<char>(100 + version.size() + 1);
    header[24] = 1;
    header[28] = static_cast<char>(pn.size());
    header.replace(32, pn.size(), pn);
    header[52] = static_cast<char>(version.size() + 1);
    header.replace(56, 8, "a1b2c3d4");
    header.replace(65, 8, "20240523");
    header.replace(76, 8, "09.05.01");
    return header + std::string(version) + '\0';
}
