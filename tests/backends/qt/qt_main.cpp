#include <cstdlib>

#include <QApplication>
#include <gtest/gtest.h>

/// Every test of the Qt backend runs in one application, without a display.
int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::testing::InitGoogleTest(&argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
