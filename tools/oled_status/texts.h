#pragma once

// The texts of the status screen. The build looks here for characters that have no glyph. The
// codes 001 and 003 are the degree and the minute sign.
namespace oled_status::texts {

constexpr const char *fix = "卫星12 固定";
constexpr const char *position = "48\00108\003N 11\00134\003E";
constexpr const char *selection = "记录 Recording ";
constexpr const char *news = "存储 5.8 GB 剩余, 电台 410.125 MHz, 网络已连接, 版本 1.1.4 - ";

} // namespace oled_status::texts
