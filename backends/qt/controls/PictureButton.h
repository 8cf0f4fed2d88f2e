#pragma once

#include <QToolButton>

namespace vistrane {

/// A button that shows a picture without a frame. It draws its own focus ring, because the style's
/// is barely visible on dark colours.
class PictureButton : public QToolButton {
public:
    using QToolButton::QToolButton;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace vistrane
