#include "simulator/unit/unit_root.h"

#include <gtest/gtest.h>

#include <cstring>

int main(int argc, char **argv) {
    // The build lists the tests, and may run where no unit's root can be made.
    const bool lists_only = argc > 1 && strncmp(argv[1], "--gtest_list_tests", 18) == 0;
    if (!lists_only) {
        simulator::enter_unit_root();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
