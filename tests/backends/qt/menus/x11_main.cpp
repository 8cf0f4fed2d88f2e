#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <QApplication>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/backends/posix/Pipe.h"

namespace {

/// An X server of the test's own, without a screen. It picks a free display itself.
class XServer {
public:
    XServer() : process_(fork()) {
        if (process_ == 0) {
            const std::string displayTo = std::to_string(pipe_.ends[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", displayTo.c_str(), "-screen", "0", "800x600x24",
                   "-nolisten", "tcp", nullptr);
            std::perror("Xvfb");
            _exit(1);
        }
        close(pipe_.ends[1]);
        pipe_.ends[1] = -1;
        std::array<char, 16> number = {};
        if (read(pipe_.ends[0], number.data(), number.size() - 1) > 0) {
            display_ = ":" + std::to_string(std::strtol(number.data(), nullptr, 10));
        }
    }
    ~XServer() {
        kill(process_, SIGTERM);
        waitpid(process_, nullptr, 0);
    }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// Empty when it did not start.
    const std::string& display() const { return display_; }

private:
    vistrane::Pipe pipe_;
    pid_t process_;
    std::string display_;
};

} // namespace

/// Every test runs in one application on one X server.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) {
        return RUN_ALL_TESTS();
    }
    const XServer server;
    if (server.display().empty()) {
        std::fputs("no X server\n", stderr);
        return 1;
    }
    setenv("DISPLAY", server.display().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    // The desktop that these tests are started on, if any, is none of theirs.
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    QApplication::setQuitOnLastWindowClosed(false);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
