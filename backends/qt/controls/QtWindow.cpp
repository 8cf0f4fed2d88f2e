#include "backends/qt/controls/QtWindow.h"

#include <utility>

#include <QEvent>

#include "backends/qt/controls/shown_text.h"
#include "backends/qt/menus/QtApplication.h"

namespace vistrane {

QtWindow::QtWindow(QWidget& widget) : widget_(widget) {
    widget.installEventFilter(this);
}

bool QtWindow::makeFirstResponder(NSObject*) {
    for (const std::shared_ptr<QtTextField>& field : fields_) {
        field->endEditing();
    }
    takeFocus();
    return true;
}

void QtWindow::takeFocus() {
    QWidget* const focused = widget_.focusWidget();
    if (focused == nullptr || focused == noControl_) {
        return;
    }
    if (noControl_ == nullptr) {
        noControl_ = new QWidget(&widget_);
        noControl_->setFocusPolicy(Qt::ClickFocus);
        noControl_->resize(1, 1);
        // Behind all controls, where the mouse cannot reach it.
        noControl_->lower();
        noControl_->show();
    }
    noControl_->setAccessibleName(widget_.windowTitle());
    QWidget::setTabOrder(focused, noControl_);
    noControl_->setFocus();
}

void QtWindow::makeKeyAndOrderFront(NSObject*) {
    if (isHeldBack_) {
        isWaiting_ = true;
        return;
    }
    QtApplication::orderFront(widget_);
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
