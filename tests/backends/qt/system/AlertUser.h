#pragma once

#include <functional>
#include <string>

#include <QDialog>
#include <QObject>
#include <QTimer>

namespace vistrane {

/// The dialog of an alert that is open; null without one.
QDialog* openAlert();

/// Presses that key, as a user does, in the dialog.
void pressKey(QDialog& dialog, Qt::Key key);

/// Waits for alerts and answers them. One for the main thread.
class AlertUser {
public:
    AlertUser();

    /// Called once, so many seconds after the next dialog has come up.
    void withNext(double seconds, std::function<void(QDialog&)> act);
    void pressButton(int button, double seconds);

private:
    void look();

    QTimer timer_;
    double seconds_ = 0.0;
    std::function<void(QDialog&)> act_;
};

} // namespace vistrane
