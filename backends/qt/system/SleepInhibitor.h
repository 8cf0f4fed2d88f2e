#pragma once

#include <functional>
#include <memory>
#include <string>

#include <QObject>

class QDBusMessage;

namespace vistrane {

/// Keeps the machine awake while the program captures: by the desktop portal, else by the login
/// manager, else by the screen saver, whichever answers first with yes. Nothing waits for them.
/// Main thread only.
class SleepInhibitor final : public QObject {
public:
    /// `log` is told, once, that nobody can keep the machine awake.
    explicit SleepInhibitor(std::function<void(const std::string&)> log);
    ~SleepInhibitor() override;

    void setActive(bool active);
    bool isActive() const { return isActive_; }

private:
    /// Ends one inhibition.
    using Release = std::function<void()>;

    void ask(std::size_t way);
    void answered(std::size_t way, const QDBusMessage& answer);

    const std::function<void(const std::string&)> log_;
    bool isActive_ = false;
    bool isAsking_ = false;
    bool hasComplained_ = false;
    Release release_;
};

} // namespace vistrane
