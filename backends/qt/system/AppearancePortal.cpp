#include "backends/qt/system/AppearancePortal.h"

#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace vistrane {

namespace {

constexpr char service[] = "org.freedesktop.portal.Desktop";
constexpr char path[] = "/org/freedesktop/portal/desktop";
constexpr char interfaceName[] = "org.freedesktop.portal.Settings";
constexpr char group[] = "org.freedesktop.appearance";
constexpr char key[] = "color-scheme";

/// The timeout for the first answer, because the start waits for it.
constexpr int startMilliseconds = 300;
/// The timeout for a portal that is just being started, which takes long.
constexpr int lateMilliseconds = 30000;

QDBusPendingCall ask(int milliseconds) {
    // The older of two equivalent methods, which every version of the portal has.
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interfaceName, "Read");
    question << QString(group) << QString(key);
    return QDBusConnection::sessionBus().asyncCall(question, milliseconds);
}

/// The value in nested variants.
QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

} // namespace

Appearance::Portal::Portal(std::function<void()> changed) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    // Qt finds the slot by the type's name, which must be registered first.
    qRegisterMetaType<QDBusVariant>();
    // From any sender, because a restarted portal has another name.
    bus.connect({}, path, interfaceName, "SettingChanged", this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusPendingReply<QVariant> reply = ask(startMilliseconds);
    reply.waitForFinished();
    if (reply.isValid()) {
        take(reply.value());
    } else if (reply.error().type() == QDBusError::NoReply) {
        askAgain();
    }
    changed_ = std::move(changed);
}

void Appearance::Portal::askAgain() {
    auto* const watcher = new QDBusPendingCallWatcher(ask(lateMilliseconds), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QVariant> reply = *watcher;
        if (reply.isValid()) {
            take(reply.value());
        }
        watcher->deleteLater();
    });
}

void Appearance::Portal::settingChanged(const QString& changedGroup, const QString& changedKey,
                                        const QDBusVariant& value) {
    if (changedGroup == group && changedKey == key) {
        take(value.variant());
    }
}

void Appearance::Portal::take(const QVariant& value) {
    const uint number = unwrapped(value).toUInt();
    const Scheme before =
        std::exchange(scheme_, number == dark ? dark : (number == light ? light : noPreference));
    if (changed_ && scheme_ != before) {
        changed_();
    }
}

} // namespace vistrane
