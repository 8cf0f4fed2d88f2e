#include "backends/qt/system/SleepInhibitor.h"

#include <array>
#include <chrono>
#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

#include "backends/qt/system/message_bus.h"

namespace vistrane {

namespace {

constexpr char programName[] = "Vistrane";
constexpr char portalService[] = "org.freedesktop.portal.Desktop";
constexpr char loginService[] = "org.freedesktop.login1";
constexpr char screenSaverService[] = "org.freedesktop.ScreenSaver";
constexpr char reason[] = "Capturing a time-lapse";

/// One service: its request, and how the inhibition that it granted is released. `releaseOf`
/// returns null for an answer that grants none.
struct Service {
    const char* name;
    QDBusConnection (*bus)();
    QDBusMessage (*request)();
    std::function<void()> (*releaseOf)(const QDBusMessage& answer);
};

QDBusMessage portalRequest() {
    constexpr uint suspending = 4;
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService, "/org/freedesktop/portal/desktop",
                                       "org.freedesktop.portal.Inhibit", "Inhibit");
    question << QString() << suspending << QVariantMap{{"reason", QString(reason)}};
    return question;
}

std::function<void()> portalRelease(const QDBusMessage& answer) {
    const auto request = answer.arguments().value(0).value<QDBusObjectPath>();
    if (request.path().isEmpty()) {
        return nullptr;
    }
    return [request] {
        QDBusConnection::sessionBus().asyncCall(QDBusMessage::createMethodCall(
            portalService, request.path(), "org.freedesktop.portal.Request", "Close"));
    };
}

QDBusMessage loginRequest() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        loginService, "/org/freedesktop/login1", "org.freedesktop.login1.Manager", "Inhibit");
    question << QString("sleep:idle") << QString(programName) << QString(reason)
             << QString("block");
    return question;
}

std::function<void()> loginRelease(const QDBusMessage& answer) {
    const auto lock = answer.arguments().value(0).value<QDBusUnixFileDescriptor>();
    if (!lock.isValid()) {
        return nullptr;
    }
    // Closing the last descriptor ends the inhibition.
    return [lock] {};
}

QDBusMessage screenSaverRequest() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(screenSaverService, "/org/freedesktop/ScreenSaver",
                                       "org.freedesktop.ScreenSaver", "Inhibit");
    question << QString(programName) << QString(reason);
    return question;
}

std::function<void()> screenSaverRelease(const QDBusMessage& answer) {
    bool isNumber = false;
    const uint cookie = answer.arguments().value(0).toUInt(&isNumber);
    if (!isNumber) {
        return nullptr;
    }
    return [cookie] {
        QDBusMessage end =
            QDBusMessage::createMethodCall(screenSaverService, "/org/freedesktop/ScreenSaver",
                                           "org.freedesktop.ScreenSaver", "UnInhibit");
        QDBusConnection::sessionBus().asyncCall(end << cookie);
    };
}

/// Not connected if that would block.
QDBusConnection systemBus() {
    return hangs(MessageBus::system) ? QDBusConnection(QString()) : QDBusConnection::systemBus();
}

const std::array<Service, 3> services = {{
    {portalService, QDBusConnection::sessionBus, portalRequest, portalRelease},
    {loginService, systemBus, loginRequest, loginRelease},
    {screenSaverService, QDBusConnection::sessionBus, screenSaverRequest, screenSaverRelease},
}};

} // namespace

SleepInhibitor::SleepInhibitor(std::function<void(const std::string&)> log) : log_(std::move(log)) {
    again_.setSingleShot(true);
    again_.setInterval(std::chrono::seconds(1));
    connect(&again_, &QTimer::timeout, this, [this] {
        if (isAsking_) {
            again_.start();
        } else if (isActive_ && !release_) {
            ask(0);
        }
    });
}

SleepInhibitor::~SleepInhibitor() = default;

void SleepInhibitor::setActive(bool active) {
    if (active == isActive_) {
        return;
    }
    isActive_ = active;
    if (!active && release_) {
        std::exchange(release_, nullptr)();
    } else if (active && !isAsking_) {
        ask(0);
    }
}

void SleepInhibitor::ask(std::size_t service) {
    gone_.clear();
    for (; isActive_ && service < services.size(); ++service) {
        const Service& each = services.at(service);
        QDBusConnection bus = each.bus();
        // A call on a disconnected bus never finishes.
        if (!bus.isConnected()) {
            continue;
        }
        // From any sender: QDBusServiceWatcher waits for the bus to say who its own sender is.
        bus.connect({}, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                    {QString(each.name)}, {}, this, SLOT(ownerChanged(QString, QString, QString)));
        auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(each.request()), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, service] {
            watcher->deleteLater();
            answered(service, watcher->reply());
        });
        isAsking_ = true;
        return;
    }
    isAsking_ = false;
    if (isActive_ && !std::exchange(hasWarned_, true)) {
        log_("The machine cannot be kept awake while frames are captured: no desktop service "
             "answers. Disable automatic suspend.");
    }
}

void SleepInhibitor::answered(std::size_t service, const QDBusMessage& answer) {
    Release release = answer.type() == QDBusMessage::ReplyMessage
                          ? services.at(service).releaseOf(answer)
                          : nullptr;
    if (!release) {
        ask(service + 1);
        return;
    }
    isAsking_ = false;
    const QString name = services.at(service).name;
    if (name == gone_) {
        return; // with the inhibition
    }
    if (isActive_) {
        release_ = std::move(release);
        granter_ = name;
    } else {
        // Capturing has ended meanwhile.
        release();
    }
}

void SleepInhibitor::ownerChanged(const QString& service, const QString& before, const QString&) {
    if (!before.isEmpty()) {
        gone_ = service;
        if (service == granter_) {
            release_ = nullptr; // not called: the number in it may be another program's by now
        }
    }
    if (isActive_ && !release_) {
        again_.start();
    }
}

} // namespace vistrane
