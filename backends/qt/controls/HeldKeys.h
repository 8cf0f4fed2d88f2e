#pragma once

#include <QObject>
#include <QWidget>

namespace vistrane {

/// Keeps a held key from pressing a button of the window more than once: auto-repeat must not stop
/// what the first press started.
class HeldKeys final : public QObject {
public:
    /// For the window and the buttons that it has now; owned by the window.
    explicit HeldKeys(QWidget& window);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QWidget& window_;
    /// The event that a button gets for its shortcut does not tell.
    bool isRepeatedShortcut_ = false;
};

} // namespace vistrane
