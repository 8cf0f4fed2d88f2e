#pragma once

#include <QPushButton>

namespace vistrane {

/// A push button whose text may be longer than the button: its middle is left out, and the tool
/// tip shows it whole.
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
