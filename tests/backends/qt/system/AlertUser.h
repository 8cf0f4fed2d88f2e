#pragma once

#include <functional>
#include <utility>

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QPushButton>
#include <QTimer>
#include <gtest/gtest.h>

namespace vistrane {

/// Sends that key to the dialog's focused widget, which gets the keys when the window is active.
inline void pressKey(QDialog& dialog, Qt::Key key) {
    QWidget* const focused = dialog.focusWidget() != nullptr ? dialog.focusWidget() : &dialog;
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(focused, &event);
    }
}

/// Waits for alerts and answers them. One instance, on the main thread.
class AlertUser {
public:
    AlertUser() {
        QObject::connect(&timer_, &QTimer::timeout, [this] { look(); });
    }

    /// Calls `act` once, that many seconds after the next dialog has been shown.
    void withNext(double seconds, std::function<void(QDialog&)> act) {
        seconds_ = seconds;
        act_ = std::move(act);
        timer_.start(1);
    }
    void pressButton(int button, double seconds) {
        withNext(seconds, [button](QDialog& dialog) {
            auto* const found = dialog.findChild<QPushButton*>("button" + QString::number(button));
            ASSERT_NE(found, nullptr);
            found->click();
        });
    }

private:
    void look() {
        for (QWidget* const window : QApplication::topLevelWidgets()) {
            auto* const dialog = qobject_cast<QDialog*>(window);
            if (dialog != nullptr && dialog->objectName() == "alert" && dialog->isVisible()) {
                timer_.stop();
                QTimer::singleShot(static_cast<int>(seconds_ * 1000.0), dialog,
                                   [dialog, act = std::exchange(act_, nullptr)] { act(*dialog); });
                return;
            }
        }
    }

    QTimer timer_;
    double seconds_ = 0.0;
    std::function<void(QDialog&)> act_;
};

} // namespace vistrane
