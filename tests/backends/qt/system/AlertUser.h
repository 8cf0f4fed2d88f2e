#pragma once

#include <functional>
#include <string>

#include <QDialog>
#include <QObject>
#include <QTimer>

namespace vistrane {

/// The open dialog of an alert; null without one.
QDialog* openAlert();

/// Sends that key to the dialog's focused widget.
void pressKey(QDialog& dialog, Qt::Key key);

/// Waits for alerts and answers them. One instance, on the main thread.
class AlertUser {
public:
    AlertUser();

    /// Calls `act` once, that many seconds after the next dialog has been shown.
    void withNext(double seconds, std::function<void(QDialog&)> act);
    void pressButton(int button, double seconds);

private:
    void look();

    QTimer timer_;
    double seconds_ = 0.0;
    std::function<void(QDialog&)> act_;
};

} // namespace vistrane
