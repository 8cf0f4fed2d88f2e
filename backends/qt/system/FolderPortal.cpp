#include "backends/qt/system/FolderPortal.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDialog>
#include <QGuiApplication>
#include <QWidget>

namespace vistrane {

namespace {

constexpr char service[] = "org.freedesktop.portal.Desktop";
constexpr char path[] = "/org/freedesktop/portal/desktop";
constexpr char fileChooser[] = "org.freedesktop.portal.FileChooser";
constexpr char requestInterface[] = "org.freedesktop.portal.Request";
constexpr char response[] = "Response";

/// The first version that can ask for a folder.
constexpr uint leastVersion = 3;

/// The timeout for the version: the user waits for the dialog meanwhile.
constexpr int versionMilliseconds = 1000;

/// Values of a response.
constexpr uint granted = 0;
constexpr uint cancelled = 1;

bool canAskForFolders() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
    question << QString(fileChooser) << QStringLiteral("version");
    QDBusPendingReply<QDBusVariant> reply =
        QDBusConnection::sessionBus().asyncCall(question, versionMilliseconds);
    reply.waitForFinished();
    return reply.isValid() && reply.value().variant().toUInt() >= leastVersion;
}

QString parentWindow(const QWidget* parent) {
    const bool isX11 = QGuiApplication::platformName() == QLatin1String("xcb");
    return parent != nullptr && isX11
               ? QStringLiteral("x11:") + QString::number(parent->window()->winId(), 16)
               : QString();
}

/// The path of a request, known before it is made, so that no response is missed.
QString requestPath(const QString& token) {
    QString sender = QDBusConnection::sessionBus().baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return QString(path) + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

/// Of a file, as bytes, which need not be valid text. Nothing for other addresses.
std::optional<std::string> pathOf(const QString& address) {
    constexpr char beginning[] = "file://";
    const QByteArray bytes = address.toUtf8();
    const qsizetype start = bytes.indexOf('/', sizeof beginning - 1);
    if (!bytes.startsWith(beginning) || start < 0) {
        return std::nullopt;
    }
    return QByteArray::fromPercentEncoding(bytes.mid(start)).toStdString();
}

} // namespace

std::optional<FolderPortal::Answer> FolderPortal::ask(const Question& question) {
    if (!QDBusConnection::sessionBus().isConnected() || !canAskForFolders()) {
        return std::nullopt;
    }
    return FolderPortal().run(question);
}

std::optional<FolderPortal::Answer> FolderPortal::run(const Question& question) {
    static int number = 0;
    const QString token = QStringLiteral("vistrane%1").arg(++number);
    listenTo(requestPath(token));
    QVariantMap options{{"handle_token", token}, {"modal", true}, {"directory", true}};
    if (!question.prompt.empty()) {
        options["accept_label"] = QString::fromStdString(question.prompt);
    }
    if (!question.folder.empty()) {
        // With its terminating zero.
        options["current_folder"] =
            QByteArray(question.folder.c_str(), static_cast<qsizetype>(question.folder.size() + 1));
    }
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, fileChooser, "OpenFile");
    call << parentWindow(question.parent) << QString::fromStdString(question.title) << options;

    QDialog blocker(question.parent);
    blocker.setAttribute(Qt::WA_DontShowOnScreen);
    blocker_ = &blocker;
    const QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(call));
    connect(&watcher, &QDBusPendingCallWatcher::finished, this, [this, &watcher] {
        const QDBusPendingReply<QDBusObjectPath> reply = watcher;
        if (reply.isError()) {
            end();
        } else if (reply.value().path() != request_) {
            listenTo(reply.value().path()); // portals of old choose the path
        }
    });
    const QDBusServiceWatcher portal(service, QDBusConnection::sessionBus(),
                                     QDBusServiceWatcher::WatchForUnregistration);
    connect(&portal, &QDBusServiceWatcher::serviceUnregistered, this, [this] { end(); });
    blocker.exec();
    return answer_;
}

void FolderPortal::listenTo(const QString& request) {
    request_ = request;
    QDBusConnection::sessionBus().connect(service, request, requestInterface, response, this,
                                          SLOT(responded(uint, QVariantMap)));
}

void FolderPortal::responded(uint code, const QVariantMap& results) {
    if (code == granted) {
        answer_ = Answer{pathOf(results.value("uris").toStringList().value(0)), false};
    } else if (code == cancelled) {
        answer_ = Answer{std::nullopt, true};
    }
    end();
}

void FolderPortal::end() {
    blocker_->done(QDialog::Accepted);
}

} // namespace vistrane
