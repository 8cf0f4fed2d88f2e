#pragma once

#include <QDialog>
#include <QPointer>

#include "backends/qt/system/QtAlert.h"

class QScrollArea;

namespace vistrane {

/// The dialog of an alert. Its result is the index of the pressed button. It borrows the accessory
/// view's widget while it is open. Long texts scroll, so that the dialog fits on the screen.
///
/// Not a QMessageBox, which would reorder the buttons by the desktop's rules and would not break a
/// long path.
///
/// For tests: its object name is "alert", those of its buttons are "button0" and so on.
class AlertDialog final : public QDialog {
public:
    AlertDialog(const AlertContents& contents, QWidget* accessory, QWidget* parent);
    ~AlertDialog() override;

    void reject() override;
    /// Returns the accessory view's widget.
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makePicture();
    QScrollArea* makeTexts(const AlertContents& contents);
    QWidget* makeButtons(const AlertContents& contents);
    /// The room on the screen for the dialog, without its frame.
    QSize available() const;
    /// Makes texts scroll if they are too high for the screen. `others` is the height of everything
    /// else.
    void fitHeight(QScrollArea& texts, int others);
    void returnAccessory();

    int escapeButton_;
    QPointer<QWidget> accessory_;
    QPointer<QWidget> accessoryHome_;
};

} // namespace vistrane
