#include <iostream>

#include <QCoreApplication>
#include <gtest/gtest.h>

#include "tests/desktop/Desktop.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests)) {
        if (const auto tool = vistrane::Desktop::missingTool()) {
            constexpr int skipped = 77;
            std::cout << "These tests need " << *tool << ", which is not installed.\n";
            return skipped;
        }
    }
    // For the message bus; the tests have no window of their own.
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
