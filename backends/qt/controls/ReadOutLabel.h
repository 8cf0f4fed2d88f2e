#pragma once

#include <QLabel>
#include <QVariant>

namespace vistrane {

/// A text that changes while the user drags the slider beside it. The property "widestText" is its
/// longest text: there is always room for that, so that the slider keeps its length.
class ReadOutLabel : public QLabel {
public:
    using QLabel::QLabel;

    QSize sizeHint() const override { return wideEnough(QLabel::sizeHint()); }
    QSize minimumSizeHint() const override { return wideEnough(QLabel::minimumSizeHint()); }

private:
    QSize wideEnough(const QSize& size) const {
        const int width = fontMetrics().horizontalAdvance(property("widestText").toString());
        return size.expandedTo(QSize(width + 2 * margin(), 0));
    }
};

} // namespace vistrane
