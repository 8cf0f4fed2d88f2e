#include "frontends/window/WindowLog.h"

#include <atomic>
#include <chrono>
#include <cstdlib>

#include <QString>
#include <QtGlobal>

namespace vistrane {

namespace {

constexpr std::size_t mostUnread = 1 << 20;

WindowLog* logOfQt = nullptr;
std::atomic<bool> isOpening{true};

void takeMessage(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type != QtFatalMsg) {
        logOfQt->write(message.toStdString());
        return;
    }
    const std::string reason = message.section('\n', 0, 0).toStdString();
    logOfQt->fail(isOpening ? "No window can be opened: " + reason +
                                  " Check that the display exists and that you may use it; "
                                  "'vistrane --help' tells what can be done without one."
                            : reason);
}

} // namespace

WindowLog::WindowLog(int descriptor)
    : writer_(
          descriptor, [](int) {}, mostUnread) {}

void WindowLog::write(const std::string& message) {
    writer_.write(message + "\n");
}

void WindowLog::flush() {
    writer_.flush(std::chrono::milliseconds(200));
}

void WindowLog::fail(const std::string& message) {
    write("vistrane: " + message);
    flush();
    std::_Exit(1);
}

void WindowLog::takeMessagesOfQt() {
    logOfQt = this;
    qInstallMessageHandler(takeMessage);
}

void WindowLog::windowCanBeOpened() { // NOLINT(readability-convert-member-functions-to-static)
    isOpening = false;
}

} // namespace vistrane
