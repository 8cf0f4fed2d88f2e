#include <cstdlib>

#include <gtest/gtest.h>

#include "backends/qt/loop/core_application.h"

/// Tests of the run loop in an application without a window, as the command line has it.
int main(int argc, char** argv) {
    // A locale that is not the C locale and exists everywhere: see CoreApplication.
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::testing::InitGoogleTest(&argc, argv);
    vistrane::makeCoreApplication();
    return RUN_ALL_TESTS();
}
