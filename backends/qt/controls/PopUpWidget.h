#pragma once

#include <QComboBox>

namespace vistrane {

/// A list that must be opened to select an item: neither the wheel nor a key changes the selection
/// of the closed list, because each change takes effect immediately. An item that is shown, but
/// that the user has not picked, is greyed.
class PopUpWidget : public QComboBox {
public:
    explicit PopUpWidget(QWidget* parent = nullptr);

    /// From now on the item that is shown counts as not picked.
    void forgetPick();

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    bool isPicked_ = false;
};

} // namespace vistrane
