#include "platform/debug.h"

#include "tests/support/printed.h"

#include <climits>

using namespace renewer;

namespace {

TEST(debug, level_alone_decides_what_is_printed) {
    struct {
        int level;
        int printed;
    } const cases[] = {{INT_MIN, 1}, {-1, 1}, {0, 1}, {1, 1}, {2, 0}, {5, 0}, {6, 0}, {INT_MAX, 0}};
    for (const int mode : {0, 1, 7}) {
        set_debug_mode(mode);
        EXPECT_EQ(debug_flag, mode == 1 ? 1 : 0);
        for (const auto [level, printed] : cases) {
            EXPECT_EQ(reply_of([level = level] { return debug(level, "type=%d\n", 31); }),
                      (reply{printed, printed ? "type=31\n" : "", ""}))
                << level;
        }
    }
}

} // namespace
