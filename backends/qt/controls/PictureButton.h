#pragma once

#include <QToolButton>

namespace vistrane {

/// A button that shows a picture and no frame. It draws its own ring for the keyboard focus,
/// because that of the style is barely visible on dark colours.
class PictureButton : public QToolButton {
public:
    using QToolButton::QToolButton;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace vistrane
