#pragma once

#include <QObject>
#include <QWidget>

namespace vistrane {

/// Lets a key that is held down press a button of the window once only: held a little too long, it
/// must not stop what it has just started.
class HeldKeys final : public QObject {
public:
    /// For the window and the buttons that it has now; owned by the window.
    explicit HeldKeys(QWidget& window);

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QWidget& window_;
    /// What a button learns of its shortcut does not tell.
    bool isRepeatedShortcut_ = false;
};

} // namespace vistrane
