#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QRect>
#include <sys/types.h>

namespace vistrane {

/// States of a control, by the numbers of the AT-SPI protocol.
enum class ControlState {
    active = 1,
    checked = 4,
    enabled = 8,
    focusable = 11,
    focused = 12,
    showing = 25
};

class AccessibilityBus;

/// What an assistive technology sees of one control. Each call queries the program, and throws
/// `Unanswered` when the control is gone or the program does not answer.
class Control {
public:
    Control(std::shared_ptr<AccessibilityBus> bus, QString program, QString path);

    std::string name() const;
    std::string description() const;
    /// The protocol's name for it, "push button" for instance.
    std::string role() const;
    std::vector<Control> children() const;
    std::optional<Control> parent() const;

    bool is(ControlState state) const;
    /// In pixels of the screen.
    QRect extents() const;

    /// Of fields.
    std::string text() const;
    /// Of sliders and progress bars.
    double value() const;
    double minimum() const;
    double maximum() const;

    /// How often its value has changed so far.
    int valueChanges() const;

    bool operator==(const Control& other) const {
        return program_ == other.program_ && path_ == other.path_;
    }

private:
    QDBusMessage call(const char* interface, const char* method,
                      const QVariantList& arguments = {}) const;
    QVariant property(const char* interface, const char* name) const;

    std::shared_ptr<AccessibilityBus> bus_;
    QString program_;
    QString path_;
};

using ControlTest = std::function<bool(const Control&)>;

/// All controls from this one on that pass, in the tree's order.
std::vector<Control> allBelow(const Control& control, const ControlTest& passes);
/// The first of these.
std::optional<Control> firstBelow(const Control& control, const ControlTest& passes);

/// The tree as text, for the report of a failed test.
std::string outline(const Control& control);

/// The bus on which programs describe their controls to assistive technologies. Main thread, with
/// a QCoreApplication.
class AccessibilityBus final : public QObject,
                               public std::enable_shared_from_this<AccessibilityBus> {
    Q_OBJECT

public:
    /// Asks the session bus for it, which starts it. Counts changes of values from now on.
    explicit AccessibilityBus(const std::string& sessionAddress);
    ~AccessibilityBus() override;

    /// The root of that process' controls; nothing while it has none.
    std::optional<Control> programOf(pid_t process);

private slots:
    void countChange(const QDBusMessage& signal);

private:
    friend class Control;

    QDBusConnection bus_;
    /// By the program's name on the bus and the control's path.
    std::map<QString, int> changes_;
};

} // namespace vistrane
