#include "backends/qt/controls/PopUpWidget.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace vistrane {

void PopUpWidget::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void PopUpWidget::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_F4:
        if (count() > 0) {
            showPopup();
        }
        break;
    default:
        // Letters would select items of the closed list.
        event->ignore();
    }
}

} // namespace vistrane
