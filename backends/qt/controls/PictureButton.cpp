#include "backends/qt/controls/PictureButton.h"

#include <QPainter>

#include "backends/qt/controls/focus_ring.h"

namespace vistrane {

void PictureButton::paintEvent(QPaintEvent* event) {
    QToolButton::paintEvent(event);
    if (showsFocusRing(*this)) {
        QPainter painter(this);
        drawFocusRing(painter, rect(), palette());
    }
}

} // namespace vistrane
