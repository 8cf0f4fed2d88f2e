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

/// How long the start waits for an answer.
constexpr int patience = 300;
/// A portal that is only now being started may take that long.
constexpr int longPatience = 30000;

QDBusPendingCall ask(int milliseconds) {
    // The older of two methods of this purpose, which every version of the portal has.
    QDBusMessage question = QDBusMessage::createMethodCall(service, path, interfaceName, "Read");
    question << QString(group) << QString(key);
    return QDBusConnection::sessionBus().asyncCall(question, milliseconds);
}

/// What lies in a variant, however many are wrapped around it.
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
    // Qt knows the type by its name, which the slot is found by, only once this was called or a
    // value of it was received.
    qRegisterMetaType<QDBusVariant>();
    // From any sender: a portal that is started anew is another one.
    bus.connect({}, path, interfaceName, "SettingChanged", this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusPendingReply<QVariant> reply = ask(patience);
    reply.waitForFinished();
    if (reply.isValid()) {
        take(reply.value());
    } else if (reply.error().type() == QDBusError::NoReply) {
        askAgain();
    }
    changed_ = std::move(changed);
}

void Appearance::Portal::askAgain() {
    auto* const watcher = new QDBusPendingCallWatcher(ask(longPatience), this);
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
