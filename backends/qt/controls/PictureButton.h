#pragma once

#include <QToolButton>

namespace vistrane {

/// A button that shows a picture and no frame. A ring around it tells who uses the keyboard that
/// it has that: what a style draws there is hardly seen on dark colours.
class PictureButton : public QToolButton {
public:
    using QToolButton::QToolButton;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace vistrane
