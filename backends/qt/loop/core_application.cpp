#include "backends/qt/loop/core_application.h"

#include <clocale>
#include <string>

#include <QCoreApplication>

namespace vistrane {

void makeCoreApplication() {
    static int count = 1;
    static char name[] = "vistrane";
    static char* arguments[] = {name, nullptr};

    // QCoreApplication sets the locale of the environment, which would translate system messages,
    // and warns if it is not UTF-8.
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    new QCoreApplication(count, arguments);
    qInstallMessageHandler(handler);
    std::setlocale(LC_ALL, locale.c_str());
}

} // namespace vistrane
