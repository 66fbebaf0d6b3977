// The main of tests that run inside a panel: one fresh panel a process, there before the first platform call.
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const testing_panel::Session session;
    return RUN_ALL_TESTS();
}
