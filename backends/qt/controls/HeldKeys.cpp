#include "backends/qt/controls/HeldKeys.h"

#include <QAbstractButton>
#include <QKeyEvent>

namespace vistrane {

namespace {

bool isRepeatedPress(const QKeyEvent& event) {
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Select:
        return event.isAutoRepeat();
    default:
        return false;
    }
}

} // namespace

HeldKeys::HeldKeys(QWidget& window) : QObject(&window), window_(window) {
    window.installEventFilter(this);
    for (QAbstractButton* const button : window.findChildren<QAbstractButton*>()) {
        button->installEventFilter(this);
    }
}

bool HeldKeys::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        // Sent to the window before shortcuts are matched.
        isRepeatedShortcut_ = static_cast<QKeyEvent*>(event)->isAutoRepeat();
    } else if (watched != &window_ && event->type() == QEvent::Shortcut && isRepeatedShortcut_) {
        return true;
    } else if (watched != &window_ && event->type() == QEvent::KeyPress &&
               isRepeatedPress(*static_cast<QKeyEvent*>(event))) {
        return true;
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vistrane
