#include "progress.h"

#include <gtest/gtest.h>

using pack::progress_line;

namespace {

TEST(progress, line_of_any_width) {
    struct {
        uint64_t done;
        uint64_t total;
        size_t columns;
        const char *line;
    } const cases[] = {
        {0, 100, 40, "checking a [                    ]   0 %"},
        {50, 100, 40, "checking a [##########          ]  50 %"},
        {99, 100, 40, "checking a [################### ]  99 %"},
        {100, 100, 40, "checking a [####################] 100 %"},
        {120, 100, 40, "checking a [####################] 100 %"},
        {0, 0, 40, "checking a [####################] 100 %"},
        {3ULL << 30, 4ULL << 30, 20, "checking a  75 %"},
        {50, 100, 10, "chec  50 %"},
        {50, 100, 0, "  50 %"},
    };
    for (const auto &[done, total, columns, line] : cases) {
        EXPECT_EQ(progress_line("checking a", done, total, columns), line);
    }
}

} // namespace
