#include "frontends/window/open_window.h"

#include <clocale>
#include <cstdlib>
#include <thread>

#include <QApplication>
#include <unistd.h>

#include "backends/posix/threads.h"
#include "backends/qt/system/message_bus.h"
#include "frontends/window/WindowLog.h"
#include "frontends/window/WindowSession.h"

namespace vistrane {

namespace {

/// Qt would wait forever for a thread that it cannot start.
void failWithoutThreads(WindowLog& log) {
    std::thread thread = startThread([] {});
    if (!thread.joinable()) {
        log.fail("No window can be opened, because the system refuses another thread. Close some "
                 "programs, then start Vistrane again.");
    }
    thread.join();
}

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

} // namespace

bool hasDisplay() {
    return isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY") || isSet("DISPLAY");
}

void makeApplication() {
    static int count = 1;
    static char name[] = "vistrane";
    static char* arguments[] = {name, nullptr};
    QCoreApplication::setApplicationName("vistrane");
    QGuiApplication::setDesktopFileName("vistrane");
    // The session itself ends the program, after saving.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    new QApplication(count, arguments);
    // QApplication sets the locale of the environment. Input methods need its character set. The
    // encoder, which takes numbers as text, must not read them with a decimal comma, and the
    // system's reasons stand within English sentences.
    std::setlocale(LC_NUMERIC, "C");
    std::setlocale(LC_MESSAGES, "C");
}

void openWindow(const WindowOptions& options) {
    // Nothing here is destroyed: threads may still be running when the process ends.
    WindowLog& log = *new WindowLog(STDERR_FILENO);
    if (!hasDisplay()) {
        log.fail("There is no display to open a window on. 'vistrane --help' tells what can be "
                 "done without one.");
    }
    log.takeMessagesOfQt();
    failWithoutThreads(log);
    if (leaveHangingSessionBus()) {
        log.write("The desktop's message bus does not answer: the window opens without the "
                  "services of the desktop. Log out and in again.");
    }

    QCoreApplication::setApplicationVersion(QString::fromStdString(options.version));
    makeApplication();
    log.windowCanBeOpened();

    WindowSession& session = *new WindowSession(options, log);
    session.run();
}

} // namespace vistrane
