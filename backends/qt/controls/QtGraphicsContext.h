#pragma once

#include <QPainter>
#include <QRectF>

#include "platform/appkit/NSGraphicsContext.h"
#include "platform/coregraphics/CGGeometry.h"

namespace vistrane {

/// The graphics context of a widget while it is painted. Must not outlive the painter.
class QtGraphicsContext final : public NSGraphicsContext {
public:
    /// The context is `height` points high. Its origin is the bottom left corner.
    QtGraphicsContext(QPainter& painter, double height) : painter_(painter), height_(height) {}

    QPainter& painter() const { return painter_; }

    /// Convert between the context's coordinates and the painter's, whose origin is at the top.
    QRectF fromBottomLeft(const NSRect& rect) const {
        return {rect.origin.x, height_ - rect.origin.y - rect.size.height, rect.size.width,
                rect.size.height};
    }
    NSRect toBottomLeft(const QRectF& rect) const {
        return {{rect.x(), height_ - rect.y() - rect.height()}, {rect.width(), rect.height()}};
    }

private:
    QPainter& painter_;
    double height_;
};

} // namespace vistrane
