#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/desktop/Picture.h"

namespace vistrane {

/// States of a control, by the numbers of the assistive technologies' protocol.
enum class ControlState {
    active = 1,
    checked = 4,
    editable = 7,
    enabled = 8,
    focusable = 11,
    focused = 12,
    modal = 16,
    pressed = 20,
    showing = 25,
    visible = 30
};

class AccessibilityBus;

/// What an assistive technology sees of one control. Every question is asked afresh; it throws
/// `Unanswered` when the control is gone or its program is busy for very long.
class Control {
public:
    Control(std::shared_ptr<AccessibilityBus> bus, std::string program, std::string path);

    std::string name() const;
    std::string description() const;
    /// The protocol's name of it, "push button" for instance.
    std::string role() const;
    std::vector<Control> children() const;
    std::optional<Control> parent() const;

    bool is(ControlState state) const;
    /// On the screen.
    Rectangle extents() const;

    /// Of labels and fields.
    std::string text() const;
    /// Of sliders and progress bars.
    double value() const;
    double maximum() const;

    /// How often its value has changed since the bus was told to count.
    int valueChanges() const;

    bool operator==(const Control& other) const {
        return program_ == other.program_ && path_ == other.path_;
    }

private:
    std::shared_ptr<AccessibilityBus> bus_;
    std::string program_;
    std::string path_;
};

using ControlTest = std::function<bool(const Control&)>;

/// The first control below this one, itself included, that passes; in the tree's order.
std::optional<Control> firstBelow(const Control& control, const ControlTest& passes);
/// All that pass.
std::vector<Control> allBelow(const Control& control, const ControlTest& passes);

/// The tree as text, for the report of a failed test.
std::string outline(const Control& control);

/// The bus on which programs tell assistive technologies about their controls.
class AccessibilityBus : public std::enable_shared_from_this<AccessibilityBus> {
public:
    /// Asks the session's bus for it, which starts it.
    static std::shared_ptr<AccessibilityBus> onSession(const std::string& sessionAddress);
    ~AccessibilityBus();
    AccessibilityBus(const AccessibilityBus&) = delete;
    AccessibilityBus& operator=(const AccessibilityBus&) = delete;

    /// From now on programs tell of every change of a value, and none is missed.
    void countValueChanges();

    /// The root of that process's controls; nothing while it has none.
    std::optional<Control> programOf(pid_t process);

private:
    friend class Control;
    class Bus;

    AccessibilityBus();

    std::unique_ptr<Bus> bus_;
};

} // namespace vistrane
