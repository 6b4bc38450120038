#pragma once

namespace simulator {

// The columns or the rows of a panel's window; both ends belong to it.
struct window_range {
    int start = 0;
    int end = 0;

    bool fits(int limit) const { return start <= end && end < limit; }
};

} // namespace simulator
