#include <cstdio>
#include <cstdlib>

#include <QApplication>
#include <gtest/gtest.h>

#include "tests/support/Program.h"

/// Every test runs in one application on an X server of the tests' own, with a window manager.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    // The server takes the first free number and writes it to its standard output.
    vistrane::Program server(
        {"Xvfb", "-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp"});
    const auto number = server.nextLine();
    if (!number) {
        std::fprintf(stderr, "no X server: %s\n", server.errors().c_str());
        return 1;
    }
    ::setenv("DISPLAY", (":" + *number).c_str(), 1);
    ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    // Not the session bus of the desktop on which the tests were started.
    ::setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    // Without the session and the settings of its user.
    const vistrane::Program windowManager(
        {"openbox", "--sm-disable", "--config-file", "/dev/null"});
    QApplication::setQuitOnLastWindowClosed(false);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
