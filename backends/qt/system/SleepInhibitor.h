#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include <QObject>
#include <QTimer>

class QDBusMessage;

namespace vistrane {

/// Keeps the machine awake while the program captures, through the desktop portal, the login
/// manager or the screen saver, tried in this order. A service that is restarted has forgotten its
/// inhibitions, so they are asked again when one of the three appears or restarts. Never blocks,
/// except for `busTimeout` if the system bus hangs. Main thread only.
class SleepInhibitor final : public QObject {
    Q_OBJECT

public:
    /// `log` gets one line, once, if no service can keep the machine awake.
    explicit SleepInhibitor(std::function<void(const std::string&)> log);
    ~SleepInhibitor() override;

    void setActive(bool active);
    bool isActive() const { return isActive_; }

private slots:
    /// The signal NameOwnerChanged of the message buses, for the three services. `now` is empty if
    /// the service has gone.
    void ownerChanged(const QString& service, const QString& before, const QString& now);

private:
    /// Ends one inhibition.
    using Release = std::function<void()>;

    void ask(std::size_t service);
    void answered(std::size_t service, const QDBusMessage& answer);

    const std::function<void(const std::string&)> log_;
    bool isActive_ = false;
    bool isAsking_ = false;
    bool hasWarned_ = false;
    /// Null while no service keeps the machine awake.
    Release release_;
    /// The service that `release_` belongs to.
    QString granter_;
    /// The last service that has gone since the last request: its answer may arrive later.
    QString gone_;
    /// Delays a new request, so that a service that keeps crashing is not kept busy.
    QTimer again_;
};

} // namespace vistrane
