#pragma once

#include <string_view>

namespace simulator {

extern const std::string_view report_page; // page.html

} // namespace simulator
