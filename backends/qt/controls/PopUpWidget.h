#pragma once

#include <QComboBox>

namespace vistrane {

/// A list that opens before anything is picked: neither the wheel nor a key changes the selection
/// of the closed list, as picking has effects that nobody wants in passing.
class PopUpWidget : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace vistrane
