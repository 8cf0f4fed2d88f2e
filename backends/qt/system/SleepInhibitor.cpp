#include "backends/qt/system/SleepInhibitor.h"

#include <array>
#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>

namespace vistrane {

namespace {

constexpr char programName[] = "Vistrane";
constexpr char reason[] = "Capturing a time-lapse";

/// One service: its request, and how the inhibition that it granted is released. `releaseOf`
/// returns null for an answer that grants none.
struct Service {
    QDBusConnection (*bus)();
    QDBusMessage (*request)();
    std::function<void()> (*releaseOf)(const QDBusMessage& answer);
};

QDBusMessage portalRequest() {
    constexpr uint suspending = 4;
    QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
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
        QDBusConnection::sessionBus().asyncCall(
            QDBusMessage::createMethodCall("org.freedesktop.portal.Desktop", request.path(),
                                           "org.freedesktop.portal.Request", "Close"));
    };
}

QDBusMessage loginRequest() {
    QDBusMessage question =
        QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                       "org.freedesktop.login1.Manager", "Inhibit");
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
    QDBusMessage question = QDBusMessage::createMethodCall(
        "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
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
        QDBusMessage end = QDBusMessage::createMethodCall(
            "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
            "org.freedesktop.ScreenSaver", "UnInhibit");
        QDBusConnection::sessionBus().asyncCall(end << cookie);
    };
}

const std::array<Service, 3> services = {{
    {QDBusConnection::sessionBus, portalRequest, portalRelease},
    {QDBusConnection::systemBus, loginRequest, loginRelease},
    {QDBusConnection::sessionBus, screenSaverRequest, screenSaverRelease},
}};

} // namespace

SleepInhibitor::SleepInhibitor(std::function<void(const std::string&)> log)
    : log_(std::move(log)) {}

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
    // A call on a disconnected bus never finishes.
    while (service < services.size() && !services.at(service).bus().isConnected()) {
        ++service;
    }
    isAsking_ = isActive_ && service < services.size();
    if (isAsking_) {
        const QDBusPendingCall call =
            services.at(service).bus().asyncCall(services.at(service).request());
        auto* const watcher = new QDBusPendingCallWatcher(call, this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, service] {
            watcher->deleteLater();
            answered(service, watcher->reply());
        });
    } else if (isActive_ && !std::exchange(hasWarned_, true)) {
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
    if (isActive_) {
        release_ = std::move(release);
    } else {
        // Capturing has ended meanwhile.
        release();
    }
}

} // namespace vistrane
