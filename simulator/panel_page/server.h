#pragma once

#include "simulator/panel_page/session.h"

namespace simulator {

// Serves the front panel on 127.0.0.1 until `ended` returns true. The address contains a random
// token; requests without it or with another host name are refused, and the page loads nothing from
// elsewhere.
//
// `port`: 0 for any free one. `begun` is called with the address as soon as the page can be loaded.
// Packages that are dropped on the page are stored in `work`. Throws std::runtime_error if the port
// is taken.
void serve_panel(panel_session &session, int port, const std::filesystem::path &work,
                 const std::function<void(const std::string &address)> &begun,
                 const std::function<bool()> &ended);

} // namespace simulator
