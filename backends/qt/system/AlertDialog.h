#pragma once

#include <QDialog>
#include <QPointer>

#include "backends/qt/system/QtAlert.h"

class QScrollArea;

namespace vistrane {

/// The dialog of an alert. Its result is the number of the answering button, counted from 0; while
/// it is open it borrows the accessory view's widget.
///
/// It stays within the screen, so that its buttons can be reached, however long its texts are.
///
/// For whoever drives it: its object name is "alert", those of its buttons are "button0" and so on.
class AlertDialog final : public QDialog {
public:
    AlertDialog(const AlertContents& contents, QWidget* accessory, QWidget* parent);
    ~AlertDialog() override;

    void reject() override;
    /// Gives the accessory view's widget back.
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makePicture();
    QScrollArea* makeTexts(const AlertContents& contents);
    QWidget* makeButtons(const AlertContents& contents);
    /// The room for the dialog without its frame.
    QSize available() const;
    /// Lets texts scroll that are too high for the screen. `others` is the height of all else.
    void fitHeight(QScrollArea& texts, int others);
    void returnAccessory();

    int escapeButton_;
    QPointer<QWidget> accessory_;
    QPointer<QWidget> accessoryHome_;
};

} // namespace vistrane
