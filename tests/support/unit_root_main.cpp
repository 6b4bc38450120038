#include "simulator/unit/unit_root.h"

#include <gtest/gtest.h>

int main(int argc, char **argv) {
    simulator::enter_unit_root();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
