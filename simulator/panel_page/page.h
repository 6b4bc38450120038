#pragma once

#include <string_view>

namespace simulator {

// The files of simulator/panel_page/page.
extern const std::string_view page_html;
extern const std::string_view page_css;
extern const std::string_view page_js;

} // namespace simulator
