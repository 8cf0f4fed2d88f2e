#pragma once

#include <QPushButton>

namespace vistrane {

/// A push button for long texts: the middle of the text is elided, and the tool tip shows all of
/// it.
class PathButton : public QPushButton {
public:
    using QPushButton::QPushButton;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    QString fittingText() const;
};

} // namespace vistrane
