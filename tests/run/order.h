#pragma once

#include "simulator/unit/unit.h"

#include <gtest/gtest.h>

// Whether the time line has all of these lines; their first occurrences in this order.
inline testing::AssertionResult in_order(const simulator::outcome &end,
                                         std::initializer_list<std::string_view> lines) {
    std::optional<simulator::unit_time> last;
    for (const std::string_view line : lines) {
        const auto when = end.when(line);
        if (!when) {
            return testing::AssertionFailure() << "never: " << line << "\n" << end.transcript();
        }
        if (last && *when < *last) {
            return testing::AssertionFailure() << "too early: " << line << "\n" << end.transcript();
        }
        last = when;
    }
    return testing::AssertionSuccess();
}
