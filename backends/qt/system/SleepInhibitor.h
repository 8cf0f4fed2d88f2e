#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QObject>

class QDBusMessage;

namespace vistrane {

/// Keeps the machine awake while the program captures, through the desktop portal, the login
/// manager or the screen saver, tried in this order. Never blocks. Main thread only.
class SleepInhibitor final : public QObject {
public:
    /// `log` gets one line, once, if no service can keep the machine awake.
    explicit SleepInhibitor(std::function<void(const std::string&)> log);
    ~SleepInhibitor() override;

    void setActive(bool active);
    bool isActive() const { return isActive_; }

private:
    /// Ends one inhibition.
    using Release = std::function<void()>;

    void ask(std::size_t service);
    void answered(std::size_t service, const QDBusMessage& answer);

    const std::function<void(const std::string&)> log_;
    bool isActive_ = false;
    bool isAsking_ = false;
    bool hasWarned_ = false;
    Release release_;
};

} // namespace vistrane
