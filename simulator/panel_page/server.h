#pragma once

#include "simulator/panel_page/session.h"

namespace simulator {

// Serves the front panel on 127.0.0.1 until `ended` returns true. Only who knows its address, which
// holds a token that is new each time, reaches it: other paths and other names of the host are
// refused, and the page loads nothing from elsewhere.
//
// `port`: 0 for any that is free. `begun` is told the address once the page can be loaded. Packages
// that are dropped on the page come into `work`. Throws std::runtime_error when the port is taken.
void serve_panel(panel_session &session, int port, const std::filesystem::path &work,
                 const std::function<void(const std::string &address)> &begun,
                 const std::function<bool()> &ended);

} // namespace simulator
