#pragma once

#include <QObject>
#include <QWidget>

namespace vistrane {

/// Prevents a held key from pressing a button more than once: auto-repeat must not stop what the
/// first press has started.
class HeldKeys final : public QObject {
public:
    /// Applies to the window and its current buttons. Owned by the window.
    explicit HeldKeys(QWidget& window);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QWidget& window_;
    /// Whether the last shortcut was an auto-repeat. The event that a button gets for its shortcut
    /// does not say so.
    bool isRepeatedShortcut_ = false;
};

} // namespace vistrane
