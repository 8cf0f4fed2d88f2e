#include "backends/qt/controls/PopUpWidget.h"

#include <QKeyEvent>
#include <QStyleOptionComboBox>
#include <QStylePainter>
#include <QWheelEvent>

namespace vistrane {

PopUpWidget::PopUpWidget(QWidget* parent) : QComboBox(parent) {
    connect(this, &QComboBox::activated, this, [this] {
        isPicked_ = true;
        update();
    });
}

void PopUpWidget::forgetPick() {
    isPicked_ = false;
    update();
}

void PopUpWidget::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    if (currentIndex() < 0) {
        option.currentText = placeholderText();
    }
    if (currentIndex() < 0 || !isPicked_) {
        for (const QPalette::ColorRole role : {QPalette::ButtonText, QPalette::Text}) {
            option.palette.setBrush(role, option.palette.placeholderText());
        }
    }
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

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
