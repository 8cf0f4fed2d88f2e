#include "platform/qt/controls/QtWindow.h"

#include <utility>

#include <QEvent>

#include "platform/qt/controls/shown_text.h"

namespace vistrane {

QtWindow::QtWindow(QWidget& widget) : widget_(widget) {
    widget.installEventFilter(this);
}

bool QtWindow::makeFirstResponder(NSObject* responder) {
    for (const std::shared_ptr<QtTextField>& field : fields_) {
        if (field.get() != responder) {
            field->endEditing();
        }
    }
    return true;
}

void QtWindow::makeKeyAndOrderFront(NSObject*) {
    if (isHeldBack_) {
        isWaiting_ = true;
        return;
    }
    widget_.setWindowState(widget_.windowState() & ~Qt::WindowMinimized);
    widget_.show();
    widget_.raise();
    widget_.activateWindow();
}

void QtWindow::setHeldBack(bool isHeldBack) {
    isHeldBack_ = isHeldBack;
    if (!isHeldBack && std::exchange(isWaiting_, false)) {
        makeKeyAndOrderFront(nullptr);
    }
}

void QtWindow::setTitle(const std::string& title) {
    widget_.setWindowTitle(shownText(title));
}

bool QtWindow::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Close && watched == &widget_ && widget_.isVisible()) {
        willClose_.send(this);
    }
    return QObject::eventFilter(watched, event);
}

} // namespace vistrane
