#pragma once

#include <QComboBox>

namespace vistrane {

/// A list that must be opened to select an item: neither the wheel nor a key changes the selection
/// of the closed list, because each change takes effect immediately.
class PopUpWidget : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace vistrane
